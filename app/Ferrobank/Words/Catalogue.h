#pragma once

#include <QtCore/QString>
#include <QtCore/QStringList>
#include <QtCore/QTranslator>

namespace ferrobank {

/// The texts of one language, or those that one system words differently, by the text in the sources alone:
/// the same text is the same words wherever it stands. Main thread; install it with QCoreApplication, which
/// does not own it.
///
/// A text whose translation is `kLeftOut` is shown as nothing: it speaks of something that the system does
/// not have.
class Catalogue : public QTranslator {
    Q_OBJECT

public:
    /// Name of the one context in the files.
    static constexpr const char* kContext = "Ferrobank";
    static constexpr QStringView kLeftOut = u"(left out)";

    using QTranslator::QTranslator;

    [[nodiscard]] QString translate(const char* context, const char* sourceText, const char* note,
                                    int count) const override;
};

/// The catalogue for somebody who wants these languages (BCP 47, best first), of those that there are ("de",
/// "zh_CN"); empty for the English of the sources, which is what everybody understands who wants none of
/// them. Languages that are written in two scripts count as two.
[[nodiscard]] QString catalogueFor(const QStringList& wanted, const QStringList& available);

/// Installs what `folder` holds for somebody who wants these languages: "ferrobank_LANGUAGE.qm", and over it
/// "system_LANGUAGE.qm" ("system_en.qm" for English), what this system words differently; mirrors the windows
/// where the language is written from the right; the toolkit's own words come from its folder. They live as
/// long as the application object, which must exist. A file that is missing or damaged leaves its texts in
/// English.
void installWords(const QString& folder, const QStringList& wanted);

} // namespace ferrobank

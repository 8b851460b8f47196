#pragma once

#include <QtCore/QTranslator>

namespace ferrobank {

/// Words as long as those of a wordy language: every second vowel twice, and a third more at the end. For
/// looking at layouts; what it says is not meant to be read.
class LongTexts : public QTranslator {
public:
    [[nodiscard]] QString translate(const char* /*context*/, const char* sourceText, const char* /*note*/,
                                    int /*count*/) const override
    {
        const QString source = QString::fromUtf8(sourceText);
        QString text;
        bool twice = false;
        for (const QChar letter : source) {
            text += letter;
            if (QStringView(u"aeiou").contains(letter)) {
                twice = !twice;
                if (twice) {
                    text += letter;
                }
            }
        }
        static const QString more = QStringLiteral(u" und noch ein paar Wörter mehr dazu, weil es sein muss");
        return text + more.left(source.size() / 4);
    }

    [[nodiscard]] bool isEmpty() const override { return false; }
};

} // namespace ferrobank

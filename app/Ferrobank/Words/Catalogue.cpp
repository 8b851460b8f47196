#include "Ferrobank/Words/Catalogue.h"

#include <QtCore/QCoreApplication>
#include <QtCore/QDir>
#include <QtCore/QLibraryInfo>
#include <QtCore/QLocale>
#include <QtGui/QGuiApplication>

#include <memory>

using namespace Qt::StringLiterals;

namespace ferrobank {

namespace {

constexpr QLatin1StringView kPrefix("ferrobank_");
constexpr QLatin1StringView kSuffix(".qm");

bool isSameLanguage(const QLocale& one, const QLocale& other)
{
    return one.language() == other.language() && one.script() == other.script();
}

QStringList languagesIn(const QString& folder)
{
    QStringList languages;
    const QStringList files = QDir(folder).entryList({kPrefix + u'*' + kSuffix}, QDir::Files, QDir::Name);
    for (const QString& file : files) {
        languages << file.mid(kPrefix.size()).chopped(kSuffix.size());
    }
    return languages;
}

template <typename Translator>
void install(const QString& folder, const QString& name)
{
    auto translator = std::make_unique<Translator>(QCoreApplication::instance());
    if (translator->load(name, folder) && QCoreApplication::installTranslator(translator.get())) {
        translator.release(); // owned by the application object
    }
}

} // namespace

QString Catalogue::translate(const char* /*context*/, const char* sourceText, const char* note,
                             int count) const
{
    QString found = QTranslator::translate(kContext, sourceText, note, count);
    // Empty, but not null, which would mean that another catalogue is asked.
    return found == kLeftOut ? u""_s : found;
}

QString catalogueFor(const QStringList& wanted, const QStringList& available)
{
    for (const QString& tag : wanted) {
        const QLocale locale(tag);
        if (locale.language() == QLocale::English) {
            return {};
        }
        for (const QString& name : available) {
            if (locale.language() != QLocale::C && isSameLanguage(locale, QLocale(name))) {
                return name;
            }
        }
    }
    return {};
}

void installWords(const QString& folder, const QStringList& wanted)
{
    const QString language = catalogueFor(wanted, languagesIn(folder));
    if (!language.isEmpty()) {
        install<QTranslator>(QLibraryInfo::path(QLibraryInfo::TranslationsPath), u"qtbase_"_s + language);
        install<Catalogue>(folder, kPrefix + language);
        QGuiApplication::setLayoutDirection(QLocale(language).textDirection());
    }
    install<Catalogue>(folder, u"system_"_s + (language.isEmpty() ? u"en"_s : language));
}

} // namespace ferrobank

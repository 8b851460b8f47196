#include "Ferrobank/Model/ByteCount.h"

#include "support/TestProgram.h"

#include <QtCore/QLocale>
#include <QtTest/QtTest>

#include <sys/resource.h>
#include <sys/wait.h>
#include <unistd.h>

#include <csignal>
#include <limits>

using namespace Qt::StringLiterals;
using namespace ferrobank;

namespace {

const QLocale kEnglish(QLocale::English, QLocale::UnitedStates);

struct Vector {
    qint64 bytes;
    const char* text;
};

constexpr Vector kVectors[] = {
    {0, "0 bytes"},
    {1, "1 byte"},
    {2, "2 bytes"},
    {12, "12 bytes"},
    {499, "499 bytes"},
    {900, "900 bytes"},
    {999, "999 bytes"},
    {1000, "1 KB"},
    {1023, "1 KB"},
    {1024, "1 KB"},
    {1499, "1 KB"},
    {1500, "2 KB"},
    {1501, "2 KB"},
    {2500, "3 KB"},
    {2501, "3 KB"},
    {9499, "9 KB"},
    {11999, "12 KB"},
    {55000, "55 KB"},
    {99499, "99 KB"},
    {550000, "550 KB"},
    {900000, "900 KB"},
    {999499, "999 KB"},
    {999500, "1 MB"},
    {999999, "1 MB"},
    {1000000, "1 MB"},
    {1049999, "1 MB"},
    {1050001, "1.1 MB"},
    {1100000, "1.1 MB"},
    {1234567, "1.2 MB"},
    {1250000, "1.3 MB"},
    {1999999, "2 MB"},
    {5500000, "5.5 MB"},
    {12345678, "12.3 MB"},
    {123456789, "123.5 MB"},
    {550000000, "550 MB"},
    {999900000, "999.9 MB"},
    {999949999, "999.9 MB"},
    {999950000, "1 GB"},
    {999999999, "1 GB"},
    {1000000000, "1 GB"},
    {1004999999, "1 GB"},
    {1005000001, "1.01 GB"},
    {1234567898, "1.23 GB"},
    {1250000000, "1.25 GB"},
    {2500000000, "2.5 GB"},
    {4200000000, "4.2 GB"},
    {5500000000, "5.5 GB"},
    {8100000000, "8.1 GB"},
    {10000000000, "10 GB"},
    {12345678987, "12.35 GB"},
    {12400000000, "12.4 GB"},
    {55000000000, "55 GB"},
    {550000000000, "550 GB"},
    {994999999999, "995 GB"},
    {999994999999, "999.99 GB"},
    {999995000000, "1 TB"},
    {1000000000000, "1 TB"},
    {1234567890123, "1.23 TB"},
    {5500000000000, "5.5 TB"},
    {7995000000000, "8 TB"},
    {8000000000000, "8 TB"},
    {8796093022208, "8.8 TB"},
    {55000000000000, "55 TB"},
    {1000000000000000, "1 PB"},
    {10000000000000000, "10 PB"},
    {1000000000000000000, "1 EB"},
    {std::numeric_limits<qint64>::max(), "9.22 EB"},
    {-1, "-1 byte"},
    {-2, "-2 bytes"},
    {-1023, "-1 KB"},
    {-1234567898, "-1.23 GB"},
    {-12345678987, "-12.35 GB"},
    {std::numeric_limits<qint64>::min(), "-9.22 EB"},
};

} // namespace

class ByteCountTest : public QObject {
    Q_OBJECT

private Q_SLOTS:

    void countsReadAsPeopleWriteThem_data()
    {
        QTest::addColumn<qint64>("bytes");
        QTest::addColumn<QString>("text");
        for (const Vector& vector : kVectors) {
            QTest::addRow("%lld", static_cast<long long>(vector.bytes))
                << vector.bytes << QString::fromLatin1(vector.text);
        }
    }

    void countsReadAsPeopleWriteThem()
    {
        QFETCH(const qint64, bytes);
        QFETCH(const QString, text);
        QCOMPARE(byteCount(bytes, kEnglish), text);
        if (bytes >= 0) {
            QCOMPARE(byteCount(static_cast<quint64>(bytes), kEnglish), text);
        }
    }

    void germanHasItsOwnSeparator()
    {
        QCOMPARE(byteCount(quint64{12'400'000'000}, QLocale(QLocale::German)), u"12,4 GB"_s);
    }

    void frenchCountsInOctets()
    {
        const QLocale french(QLocale::French);
        QCOMPARE(byteCount(quint64{0}, french), u"0 octets"_s);
        QCOMPARE(byteCount(quint64{1}, french), u"1 octet"_s);
        QCOMPARE(byteCount(quint64{1'000}, french), u"1 Ko"_s);
        QCOMPARE(byteCount(quint64{12'400'000'000}, french), u"12,4 Go"_s);
    }

    void digitsOfTheFractionAreTheLocales()
    {
        const QLocale arabic(QLocale::Arabic, QLocale::Egypt);
        const QString expected =
            arabic.toString(1) + arabic.decimalPoint() + arabic.toString(2) + arabic.toString(5) + u" GB"_s;
        QCOMPARE(byteCount(quint64{1'250'000'000}, arabic), expected);
    }

    void anUnknownFigureIsADash()
    {
        QCOMPARE(byteCountOrDash(std::nullopt, kEnglish), u"—"_s);
        QCOMPARE(byteCountOrDash(0U, kEnglish), u"0 bytes"_s);
    }

    void aCountAboveTheSignedRangeStopsTheProgram()
    {
        const pid_t child = ::fork();
        if (child == 0) {
            ::signal(SIGABRT, SIG_DFL); // without the test library's stack trace
            const rlimit noCore{0, 0};
            ::setrlimit(RLIMIT_CORE, &noCore);
            qInstallMessageHandler([](QtMsgType, const QMessageLogContext&, const QString&) {});
            const QString text = byteCount(quint64{1} << 63U, kEnglish);
            ::_exit(text.isEmpty() ? 1 : 0);
        }
        int status = 0;
        QCOMPARE(::waitpid(child, &status, 0), child);
        QVERIFY(WIFSIGNALED(status));
        QCOMPARE(WTERMSIG(status), SIGABRT);
    }
};

FERROBANK_TEST_WITHOUT_APPLICATION(ByteCountTest)
#include "ByteCountTest.moc"

#include "Platform/Memory.h"

#include "support/ProcessFacts.h"
#include "support/TestProgram.h"

#include <QtTest/QTest>

#include <cstring>
#include <memory>
#include <vector>

using namespace ferrobank;
using namespace ferrobank::test;

class MemoryTest : public QObject {
    Q_OBJECT

private:
    static qint64 residentBytes() { return ProcessFacts().residentBytes; }

    /// Something that reads code and constants of several libraries.
    static QString work()
    {
        const QString text = QLocale(QLocale::German).toString(1234567.5, 'f', 1);
        return text + QString::fromUtf8(QUrl(QStringLiteral("https://example.org/ä")).toEncoded());
    }

private Q_SLOTS:

    void pagesOfProgramsThatAreNotInUseAreGivenBackAndComeAgain()
    {
        const QString before = work();
        const qint64 held = residentBytes();
        returnIdleMemory();
        const qint64 left = residentBytes();
        constexpr qint64 kMebibyte = 1024 * 1024;
        QVERIFY2(held - left > 2 * kMebibyte, qPrintable(QStringLiteral("%1 to %2").arg(held).arg(left)));
        QCOMPARE(work(), before);
    }

    void freedMemoryIsGivenBack()
    {
        if (!ProcessFacts::freedMemoryIsReused()) {
            QSKIP("The address sanitizer keeps freed memory.");
        }
        constexpr std::size_t kBlock = 4096;
        constexpr std::size_t kBlocks = 4096;
        std::vector<std::unique_ptr<char[]>> blocks(kBlocks);
        for (auto& block : blocks) {
            block = std::make_unique<char[]>(kBlock);
        }
        const auto last = std::make_unique<char[]>(kBlock); // keeps the end of the heap where it is
        const qint64 held = residentBytes();
        blocks.clear();
        returnIdleMemory();
        QVERIFY(held - residentBytes() > static_cast<qint64>(kBlock * kBlocks / 2));
        QCOMPARE(last[0], char(0));
    }

    void whatWasWrittenStays()
    {
        static int counter = 0;
        static const char* const kWord = "word";
        counter = 42;
        const std::vector<int> numbers(1000, 7);
        returnIdleMemory();
        returnIdleMemory();
        QCOMPARE(counter, 42);
        QCOMPARE(std::strlen(kWord), 4U);
        QCOMPARE(numbers.back(), 7);
    }
};

FERROBANK_TEST(MemoryTest)
#include "MemoryTest.moc"

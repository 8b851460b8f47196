#include "figures/DisplayText.h"

#include <gtest/gtest.h>

#include <string>

namespace ferrobank::drive {

namespace {

TEST(DisplayName, textStaysAsItIs)
{
    EXPECT_EQ(displayName("notes/Ärger über Öl.txt"), "notes/Ärger über Öl.txt");
    EXPECT_EQ(displayName("日本語 😀 back\\slash"), "日本語 😀 back\\slash");
    EXPECT_EQ(displayName(""), "");
}

TEST(DisplayName, lineBreaksAndControlCharactersAreWrittenOut)
{
    EXPECT_EQ(displayName("a\nb\tc\x1b[31m\x7f"), "a\\nb\\tc\\x1b[31m\\x7f");
    EXPECT_EQ(displayName("\xc2\x85"), "\\xc2\\x85");
}

TEST(DisplayName, bytesThatAreNoTextAreWrittenOut)
{
    EXPECT_EQ(displayName("caf\xe9"), "caf\\xe9");
    EXPECT_EQ(displayName("\x80"), "\\x80");
    EXPECT_EQ(displayName("cut \xe6\x97"), "cut \\xe6\\x97");
    EXPECT_EQ(displayName("\xf0\x9f\x98"), "\\xf0\\x9f\\x98");
}

TEST(DisplayName, overlongFormsAndSurrogatesAreNoText)
{
    EXPECT_EQ(displayName("\xc0\xaf"), "\\xc0\\xaf");
    EXPECT_EQ(displayName("\xe0\x80\xaf"), "\\xe0\\x80\\xaf");
    EXPECT_EQ(displayName("\xed\xa0\x80"), "\\xed\\xa0\\x80");
    EXPECT_EQ(displayName("\xf4\x90\x80\x80"), "\\xf4\\x90\\x80\\x80");
}

TEST(DisplayBytes, unitsAreDecimalWithOneDigitAtMost)
{
    EXPECT_EQ(displayBytes(0), "0 bytes");
    EXPECT_EQ(displayBytes(1), "1 byte");
    EXPECT_EQ(displayBytes(999), "999 bytes");
    EXPECT_EQ(displayBytes(1000), "1 KB");
    EXPECT_EQ(displayBytes(8'400'000'000), "8.4 GB");
    EXPECT_EQ(displayBytes(4'000'000'000), "4 GB");
    EXPECT_EQ(displayBytes(212'700'000'000), "212 GB");
    EXPECT_EQ(displayBytes(8'000'000'000'000), "8 TB");
}

TEST(DisplayBytes, roundingFollowsTheMeaningOfTheFigure)
{
    EXPECT_EQ(displayBytes(8'410'000'000, Rounding::Down), "8.4 GB");
    EXPECT_EQ(displayBytes(8'410'000'000, Rounding::Up), "8.5 GB");
    EXPECT_EQ(displayBytes(8'400'000'000, Rounding::Up), "8.4 GB");
    EXPECT_EQ(displayBytes(212'000'000'001, Rounding::Up), "213 GB");
}

TEST(DisplayBytes, largestNumberIsShown)
{
    EXPECT_EQ(displayBytes(~std::uint64_t{0}), "18446 PB");
}

} // namespace

} // namespace ferrobank::drive

#include "words/Language.h"
#include "words/Sentences.h"

#include <gtest/gtest.h>

namespace ferrobank::drive::testing {
namespace {

const Sentences kGerman = Sentences::fromText("# comment\n"
                                              "\n"
                                              "Starts at login\nStartet bei der Anmeldung\n"
                                              "{} is full.\n{} ist voll.\n"
                                              "{} of {} is free.\nVon {2} sind {1} frei.\n"
                                              "Cannot write {}: {}.\n{} kann nicht geschrieben werden: {}.\n"
                                              "Restart Ferrobank.\nStarten Sie Ferrobank neu.\n");

TEST(Sentences, whatHasNoPlaceIsSaidAsAWhole)
{
    EXPECT_EQ(kGerman.say("Starts at login"), "Startet bei der Anmeldung");
    EXPECT_EQ(kGerman.say("Starts at login now"), "Starts at login now");
}

TEST(Sentences, valuesComeIntoTheirPlaces)
{
    EXPECT_EQ(kGerman.say("The disk is full."), "The disk ist voll.");
    EXPECT_EQ(kGerman.say("Cannot write /a/b: No space left on device."),
              "/a/b kann nicht geschrieben werden: No space left on device.");
}

TEST(Sentences, valuesChangePlacesWhereTheLanguageWantsIt)
{
    EXPECT_EQ(kGerman.say("1 GB of 8 GB is free."), "Von 8 GB sind 1 GB frei.");
}

TEST(Sentences, severalSentencesAreSaidOneByOneAndUnknownOnesStay)
{
    EXPECT_EQ(kGerman.say("/x is full. Who knows. Restart Ferrobank."),
              "/x ist voll. Who knows. Starten Sie Ferrobank neu.");
}

TEST(Sentences, ofTwoThatFitTheOneThatSaysMoreIsMeant)
{
    const Sentences two = Sentences::fromText("{}.\n1 {}\nThe {} is gone.\n2 {}\n{} is gone.\n3 {}\n");
    EXPECT_EQ(two.say("The file is gone."), "2 file");
}

TEST(Sentences, placesAreNeverEmpty)
{
    EXPECT_EQ(kGerman.say(" is full."), " is full.");
}

TEST(Sentences, emptyTextAndEnglishStayAsTheyAre)
{
    EXPECT_EQ(kGerman.say(""), "");
    EXPECT_EQ(Sentences().say("Restart Ferrobank."), "Restart Ferrobank.");
}

TEST(Sentences, entryWithAPlaceTooManyIsLeftOut)
{
    const Sentences wrong =
        Sentences::fromText("A {}.\nB {} {}.\nC {}.\nD {7}.\nE {}.\nF {x}.\nG {}.\nH {}.\nodd line");
    EXPECT_EQ(wrong.size(), 1U);
    EXPECT_EQ(wrong.say("A b."), "A b.");
    EXPECT_EQ(wrong.say("G b."), "H b.");
}

TEST(Sentences, fileThatIsNotThereLeavesEnglish)
{
    EXPECT_EQ(Sentences::fromFile("/nonexistent/sentences_de.txt").say("Restart Ferrobank."),
              "Restart Ferrobank.");
}

TEST(Language, firstOneThatThereAreWordsInWins)
{
    EXPECT_EQ(chosenLanguage({}), "");
    EXPECT_EQ(chosenLanguage({"de_AT"}), "de");
    EXPECT_EQ(chosenLanguage({"sv_SE", "fr"}), "fr");
    EXPECT_EQ(chosenLanguage({"en_GB", "de"}), "");
    EXPECT_EQ(chosenLanguage({"sv", "en", "de"}), "");
    EXPECT_EQ(chosenLanguage({"zh_CN"}), "zh_CN");
    EXPECT_EQ(chosenLanguage({"zh_TW"}), "");
    EXPECT_EQ(chosenLanguage({"C"}), "");
}

/// Variables as they were, at the end of a test.
class LanguageVariables : public ::testing::Test {
protected:
    void SetUp() override
    {
        for (const char* name : kNames) {
            ::unsetenv(name);
        }
    }

    static constexpr const char* kNames[] = {"LANGUAGE", "LC_ALL", "LC_MESSAGES", "LANG"};
};

TEST_F(LanguageVariables, theListWinsOverTheSystemsLanguage)
{
    ::setenv("LANG", "de_DE.UTF-8", 1);
    EXPECT_EQ(wantedLanguages(), (std::vector<std::string>{"de_DE"}));
    ::setenv("LC_MESSAGES", "fr_FR.UTF-8@euro", 1);
    EXPECT_EQ(wantedLanguages(), (std::vector<std::string>{"fr_FR"}));
    ::setenv("LC_ALL", "C", 1);
    EXPECT_EQ(wantedLanguages(), (std::vector<std::string>{"C"}));
    ::setenv("LANGUAGE", "es:de::", 1);
    EXPECT_EQ(wantedLanguages(), (std::vector<std::string>{"es", "de"}));
}

} // namespace
} // namespace ferrobank::drive::testing

#include "common/ini_document.h"
#include "common/messages.h"
#include "support/files.h"
#include "support/scripted_port.h"
#include "support/temp_dir.h"

#include <gtest/gtest.h>

using namespace kestrelon;
using kestrelon::test::ScriptedPort;

TEST(IniDocument, LooksUpTrimmedKeysIgnoringCaseAndSkipsNoise)
{
    IniDocument doc;
    doc.parse("stray=before any section\n"
              "[Body]\n"
              "; a comment=1\n"
              "  Count =  3  \n"
              "no equals sign here\n"
              "count=99\n"
              "PATH=a=b\n"
              "[Other]\n"
              "Count=7\n");
    EXPECT_EQ(doc.value("BODY", "COUNT"), "3"); // case-insensitive, first duplicate wins
    EXPECT_EQ(doc.value("body", "path"), "a=b"); // split at the first "="
    EXPECT_EQ(doc.value("Other", "Count"), "7"); // keys stay inside their section
    EXPECT_FALSE(doc.value("Body", "; a comment").has_value());
    EXPECT_FALSE(doc.value("Missing", "Count").has_value());
    EXPECT_EQ(doc.sectionNames(), (std::vector<std::string>{"Body", "Other"}));
}

TEST(IniDocument, IntegerAccessorAcceptsOnlySignedDecimals)
{
    IniDocument doc;
    doc.parse("[S]\nplus=+12\nminus=-7\nempty=\nhex=0x10\ntrailing=12a\nsign=-\nhuge=99999999999\nspaced=1 2\n");
    ScriptedPort port;
    EXPECT_EQ(doc.getInt("S", "plus", 0, port), 12);
    EXPECT_EQ(doc.getInt("S", "minus", 0, port), -7);
    EXPECT_EQ(doc.getInt("S", "empty", 5, port), 0);
    EXPECT_EQ(doc.getInt("S", "absent", 5, port), 5);
    EXPECT_TRUE(port.messages().empty());

    for (const char* key : {"hex", "trailing", "sign", "huge", "spaced"}) {
        port.clear();
        EXPECT_FALSE(doc.getInt("S", key, 0, port).has_value()) << key;
        EXPECT_EQ(port.texts(), std::vector<std::string>{std::string(msg::kInvalidData)}) << key;
    }
}

TEST(IniDocument, EditingOneValueKeepsEveryOtherByte)
{
    const std::string original = "; settings\r\n"
                                 "[BODY]\r\n"
                                 "COUNT = 2\r\n"
                                 "\r\n"
                                 "[Voice A]\r\n"
                                 "CURRENT_VOL =  5\r\n"
                                 "  DEFAULT_VOL=8\r\n"
                                 "\r\n"
                                 "[Voice B]\r\n"
                                 "CURRENT_VOL=3"; // no final line end
    IniDocument doc;
    doc.parse(original);
    EXPECT_EQ(doc.serialize(), original);

    doc.setInt("voice a", "CURRENT_VOL", 5); // same value: the line stays as written
    EXPECT_EQ(doc.serialize(), original);

    doc.setInt("Voice A", "CURRENT_VOL", 9);
    doc.setString("Voice B", "NEW", "x");
    doc.setString("Voice A", "ADDED", "y");
    doc.setString("Fresh", "K", "v");
    EXPECT_EQ(doc.serialize(), "; settings\r\n"
                               "[BODY]\r\n"
                               "COUNT = 2\r\n"
                               "\r\n"
                               "[Voice A]\r\n"
                               "CURRENT_VOL=9\r\n"
                               "  DEFAULT_VOL=8\r\n"
                               "ADDED=y\r\n"
                               "\r\n"
                               "[Voice B]\r\n"
                               "CURRENT_VOL=3\r\n"
                               "NEW=x\r\n"
                               "[Fresh]\r\n"
                               "K=v");
}

TEST(IniDocument, LoadTellsMissingFromUnreadable)
{
    kestrelon::test::TempDir dir;
    IniDocument doc;
    EXPECT_FALSE(doc.load(dir / "absent.ini"));
    EXPECT_EQ(doc.lastError(), "");

    std::filesystem::create_directory(dir / "folder.ini");
    EXPECT_FALSE(doc.load(dir / "folder.ini"));
    EXPECT_EQ(doc.lastError(), msg::kUnableToOpenIni);

    kestrelon::test::writeBytes(dir / "ok.ini", "[A]\nk=v\n");
    ASSERT_TRUE(doc.load(dir / "ok.ini"));
    EXPECT_EQ(doc.lastError(), "");
    EXPECT_EQ(doc.value("A", "k"), "v");
}

TEST(IniDocument, ReadsBackWhatItWritesKeepingALastLinesCarriageReturnAndNeverSplittingALine)
{
    // A CR closing a last line without LF is the line's byte, not a line end.
    IniDocument doc;
    doc.parse("[A]\r\nk=v\r");
    EXPECT_EQ(doc.value("A", "k"), "v");
    EXPECT_EQ(doc.serialize(), "[A]\r\nk=v\r");
    // Still so once a line follows it, also in a text with no line end at all.
    for (const char* text : {"[A]\r\nk=v\r", "k=v\r"}) {
        doc.parse(text);
        doc.setString("B", "k", "w");
        IniDocument reread;
        reread.parse(doc.serialize());
        EXPECT_EQ(reread.serialize(), doc.serialize()) << text;
        EXPECT_EQ(reread.value("B", "k"), "w") << text;
    }

    // A value, key or section holding a line break is still one line; "=",
    // ";", an empty value and the smallest int come back as written.
    IniDocument written;
    written.setString("S\nT", "Key\r\nTwo", "first\nsecond\r");
    written.setString("S", "other", "a label with = and ; inside");
    written.setString("S", "empty", "");
    written.setInt("S", "min", -2147483648LL);
    IniDocument read;
    read.parse(written.serialize());
    EXPECT_EQ(read.sectionNames(), (std::vector<std::string>{"S T", "S"}));
    EXPECT_EQ(read.value("S T", "Key  Two"), "first second");
    EXPECT_EQ(read.value("S", "other"), "a label with = and ; inside");
    EXPECT_EQ(read.value("S", "empty"), "");
    ScriptedPort port;
    EXPECT_EQ(read.getInt("S", "min", 0, port), std::numeric_limits<int>::min());
    EXPECT_EQ(read.serialize(), written.serialize());
}

TEST(IniDocument, ListsOnlyTheNumberedNamesTheFileHolds)
{
    IniDocument doc;
    doc.parse("[ITEM0]\n[item2]\n[ITEM01]\n[ITEM+3]\n[ITEM]\n[ITEM5]\n[ITEM2]\n[ITEM99999999999]\n[ITEM2147483647]\n"
              "[Body]\n"
              "ALGO1=first\nalgo1=second\nALGO0_SECTION=S0\nALGO1_section=S1\nALGO_SECTION=none\nALGO 2=no\n"
              "ALGO3=\nALGO7=beyond\n");
    EXPECT_EQ(doc.numberedSections("ITEM", 5), (std::vector<int>{0, 2}));
    EXPECT_EQ(doc.numberedSections("item", std::numeric_limits<int>::max()), (std::vector<int>{0, 2, 5}));

    using Values = std::vector<std::pair<int, std::string>>;
    EXPECT_EQ(doc.numberedValues("BODY", "ALGO", "", 5), (Values{{1, "first"}, {3, ""}}));
    EXPECT_EQ(doc.numberedValues("Body", "ALGO", "_SECTION", 5), (Values{{0, "S0"}, {1, "S1"}}));
    EXPECT_TRUE(doc.numberedValues("Missing", "ALGO", "", 5).empty());
}

TEST(IniDocument, SectionLookupsStayRightWhileLinesMove)
{
    IniDocument doc;
    doc.parse("[A]\nk=1\n[B]\n[x=1\nk=2\n[a]\nk=3\n[D]\nk=6\n");
    doc.setString("A", "new", "n"); // moves every later section down
    doc.setString("C", "k", "4"); // a new last section
    doc.setString("C", "j", "5"); // after the last section line: nothing moves
    doc.setString("B", "[x", "y]"); // rewritten in place into a section line "[x=y]"
    doc.setString("x=y", "k", "7"); // so B's k now belongs to that section
    doc.setString("D", "k", "8");
    EXPECT_EQ(doc.value("a", "k"), "1");
    EXPECT_EQ(doc.value("A", "new"), "n");
    EXPECT_EQ(doc.value("x=y", "k"), "7");
    EXPECT_EQ(doc.value("C", "j"), "5");
    EXPECT_EQ(doc.value("D", "k"), "8");
    EXPECT_FALSE(doc.value("B", "k").has_value());

    IniDocument reread;
    reread.parse(doc.serialize());
    for (const auto& [section, key] : std::vector<std::pair<std::string, std::string>>{
             {"A", "k"}, {"A", "new"}, {"B", "k"}, {"x=y", "k"}, {"C", "k"}, {"C", "j"}, {"D", "k"}})
        EXPECT_EQ(reread.value(section, key), doc.value(section, key)) << section << "/" << key;
}

TEST(IniDocument, ValuesRewrittenToOtherLengthsLeaveTheirNeighboursAsTheyWere)
{
    // A line's key and value are found within its text: each length change
    // must keep the line, the next line and the next section reading right.
    IniDocument doc;
    doc.parse("[A]\r\n  k = one \r\nnext=2\r\n[B]\r\nk=3\r\n");
    for (const char* value : {"a much longer value", "s", "", "medium value", "x"}) {
        doc.setString("A", "K", value);
        EXPECT_EQ(doc.value("a", "k"), value);
        EXPECT_EQ(doc.value("A", "next"), "2");
        EXPECT_EQ(doc.value("B", "k"), "3");
        EXPECT_EQ(doc.serialize(), "[A]\r\nK=" + std::string(value) + "\r\nnext=2\r\n[B]\r\nk=3\r\n");
    }
}

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
    doc.parse("; a comment=1\n"
              "stray=before any section\n"
              "[Body]\n"
              "  Count =  3  \n"
              "no equals sign here\n"
              "count=99\n"
              "PATH=a=b\n"
              "[Other]\n"
              "Count=7\n");
    EXPECT_EQ(doc.value("BODY", "COUNT"), "3");       // case-insensitive, first duplicate wins
    EXPECT_EQ(doc.value("body", "path"), "a=b");      // split at the first "="
    EXPECT_EQ(doc.value("Other", "Count"), "7");      // keys stay inside their section
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

TEST(IniDocument, ReadsBackEverythingItWrites)
{
    IniDocument written;
    written.setString("TAG_LABEL", "LabelName", "a label with = and ; inside");
    written.setInt("SPEECH_EVNTS", "Count", -2147483648LL);
    written.setString("EVENT0", "Description", "");
    const std::string text = written.serialize();

    IniDocument read;
    read.parse(text);
    EXPECT_EQ(read.value("TAG_LABEL", "LabelName"), "a label with = and ; inside");
    ScriptedPort port;
    EXPECT_EQ(read.getInt("SPEECH_EVNTS", "Count", 0, port), std::numeric_limits<int>::min());
    EXPECT_EQ(read.value("EVENT0", "Description"), "");
    EXPECT_EQ(read.serialize(), text);
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

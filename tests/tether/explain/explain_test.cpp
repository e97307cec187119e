// What is known of codes and lines, however they are pasted.
#include "tether/explain/explain.h"

#include <gtest/gtest.h>
#include <sstream>
#include <string>

#include "host/values/problem_codes.h"
#include "host/values/sdk_codes.h"
#include "tether/explain/pattern.h"
#include "tether/explain/wire_texts.h"

namespace {

using explain::explanation_of;

std::string explained(const std::string& text) {
    return explanation_of(text).value_or("nothing is known of it");
}

void expect_parts(const std::string& text, const std::vector<std::string>& parts) {
    const std::string explanation = explained(text);
    for (const std::string& part : parts) {
        EXPECT_NE(explanation.find(part), std::string::npos)
            << "\"" << part << "\" is not in what is said of " << text << ":\n"
            << explanation;
    }
}

TEST(Explain, AProblemHasItsMeaningCauseAndAdvice) {
    for (const host::CodeEntry& entry : host::codes) {
        expect_parts(std::string(entry.word), {std::string(entry.word) + ", a problem (",
                                               "  Means:  ", "  Cause:  ", "  Do:     "});
    }
}

TEST(Explain, ACodeOfTheSdkHasToo) {
    for (const host::SdkCode& entry : host::sdk_codes) {
        expect_parts(std::string(entry.code),
                     {std::string(entry.code) + ", a code of the " + std::string(entry.from),
                      "  Means:  ", "  Cause:  ", "  Do:     "});
    }
}

TEST(Explain, ACodeMayBeWrittenShort) {
    for (const char* code : {"0x8402", "0X8402", "8402", "0x00008402", "00008402"}) {
        EXPECT_EQ(explained(code), explained("0x00008402")) << code;
    }
}

TEST(Explain, EveryCommandIsKnown) {
    for (const explain::CommandText& command : explain::command_texts) {
        expect_parts(std::string(command.name),
                     {std::string(command.name) + ", a command", "  Does:   "});
    }
    expect_parts("set_file_type|raw", {"SET_FILE_TYPE, a command"});
    expect_parts("REMOTE_CAPTURE", {"another name of CAPTURE"});
}

// With something in the place of everything that is filled in.
TEST(Explain, EveryLineOfTheWorkerIsKnown) {
    for (const explain::LineText& line : explain::line_texts) {
        std::string said(line.text);
        for (std::size_t at; (at = said.find('{')) != std::string::npos;) {
            const std::size_t end = said.find('}', at) + 1;
            const std::string name = said.substr(at, end - at);
            said.replace(at, end - at, name == "{code}" ? "0x00008402" : "something");
        }
        expect_parts(said, {said + "\n", "  Said:"});
    }
}

TEST(Explain, ALineThatTellsOfAProblemOrACodeExplainsThemToo) {
    expect_parts(
        "ERROR|Could not open the camera (0x00008402)",
        {"the SDK refused at once", "\ncamera-refused, a problem", "\n0x00008402, a code"});
    expect_parts("ERROR|Camera reported 0x0000FFFF",
                 {"0x0000FFFF, a code of the SDK that is not known here"});
    expect_parts(
        "LOG|[SONY] USB transport adapters are MISSING from /a/b — the SDK will not see "
        "any camera (0x8703)",
        {"\n0x00008703, a code"});
}

TEST(Explain, TheMostExactTextCounts) {
    expect_parts("CONNECTED|already", {"while the camera's handle is taken"});
    expect_parts("CONNECTED|MODEL-A", {"the camera has answered"});
    expect_parts("ERROR|Could not open the camera (timeout) — replug the camera",
                 {"camera-no-answer"});
}

TEST(Explain, ALineMayBePastedAsItStands) {
    const std::string line = explained("DOWNLOADED|/a/b.JPG");
    for (const char* pasted :
         {"   1.234 < DOWNLOADED|/a/b.JPG", "< DOWNLOADED|/a/b.JPG", "  DOWNLOADED|/a/b.JPG\r\n",
          "\"DOWNLOADED|/a/b.JPG\"", "`DOWNLOADED|/a/b.JPG`"}) {
        EXPECT_EQ(explained(pasted), line) << pasted;
    }
    EXPECT_EQ(explained("> CONNECT"), explained("CONNECT"));
}

TEST(Explain, WhatIsNotKnownIsSaidSoWithTheNearest) {
    for (const char* text :
         {"", "no such thing", "0x12345678", "DEADBEEF01", "0x", "it broke (0x12345678)",
          "ERROR|Something of a later worker", "LOG|[SONY] something else"}) {
        EXPECT_FALSE(explanation_of(text)) << text;
    }
    EXPECT_EQ(explain::nearest("camera-losst"), "camera-lost");
    EXPECT_EQ(explain::nearest("CONECT"), "CONNECT");
    EXPECT_EQ(explain::nearest("0x00008401"), "0x00008402");
    EXPECT_EQ(explain::nearest("error|camera not conected"), "ERROR|Camera not connected");
}

TEST(Explain, TheFirstWordOfALineSaysWhatItIsInGeneral) {
    expect_parts("DOWNLOADED", {"DOWNLOADED|..., a line", "a file is on the computer"});
    expect_parts("connected", {"CONNECTED|..., a line", "the session is up"});
    expect_parts("ERROR|", {"ERROR|..., a line", "a failure, for people"});
    expect_parts("LOG", {"LOG|..., a line", "a diagnostic"});
}

TEST(Explain, ACodeInASentenceIsFound) {
    EXPECT_EQ(explained("It could not be opened (0x8402), it says."), explained("0x00008402"));
    EXPECT_EQ(explained("ERROR|Something of a later worker (0x8402)"), explained("0x00008402"));
    EXPECT_EQ(explained("problem camera-lost: The camera went away."), explained("camera-lost"));
}

TEST(Explain, NothingMovesTheCursor) {
    EXPECT_EQ(explained("DOWNLOADED|/a\x1b[2J.JPG").find('\x1b'), std::string::npos);
    for (const explain::CommandText& command : explain::command_texts) {
        EXPECT_EQ(explained(std::string(command.name)).find('`'), std::string::npos);
    }
}

TEST(Explain, TheListNamesEverythingInEightyColumns) {
    std::string list = explain::list();
    std::istringstream lines(list);
    for (std::string line; std::getline(lines, line);) {
        EXPECT_LE(line.size(), 80u) << line;
    }
    // A long one goes on in the next line.
    for (std::size_t at; (at = list.find("\n    ")) != std::string::npos;) {
        const bool goes_on = list[at + 5] != ' ';
        list.replace(at, 5, goes_on ? " " : "\n");
    }
    for (const host::CodeEntry& entry : host::codes) {
        EXPECT_NE(list.find(std::string(entry.word) + "\n"), std::string::npos) << entry.word;
    }
    for (const explain::LineText& line : explain::line_texts) {
        EXPECT_NE(list.find(std::string(line.text) + "\n"), std::string::npos) << line.text;
    }
}

TEST(Explain, AnExplanationFitsEightyColumns) {
    for (const host::CodeEntry& entry : host::codes) {
        std::istringstream lines(explained(std::string(entry.word)));
        for (std::string line; std::getline(lines, line);) {
            EXPECT_LE(line.size(), 80u) << line;
        }
    }
}

TEST(Pattern, ATextWithSomethingFilledInIsFound) {
    using explain::is_line_of;
    EXPECT_TRUE(is_line_of("a 1.2 b", "a {number}.{number} b"));
    EXPECT_FALSE(is_line_of("a 1. b", "a {number}.{number} b"));
    EXPECT_TRUE(is_line_of("x (0x00008703)", "x ({code}){hint}"));
    EXPECT_TRUE(is_line_of("x (0x00008703) — why", "x ({code}){hint}"));
    EXPECT_FALSE(is_line_of("x (12345678AB)", "x ({code})"));
    EXPECT_FALSE(is_line_of("DOWNLOADED|", "DOWNLOADED|{path}"));
}

TEST(Pattern, TheDistanceIsThatOfSingleChanges) {
    EXPECT_EQ(explain::distance("", "abc"), 3u);
    EXPECT_EQ(explain::distance("abc", "abc"), 0u);
    EXPECT_EQ(explain::distance("kitten", "sitting"), 3u);
}

}  // namespace

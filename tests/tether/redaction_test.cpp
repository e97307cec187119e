// What a redacted record still tells.
#include "tether/conversation/redaction.h"

#include <gtest/gtest.h>

namespace {

using tether::Redaction;

// The first byte of each line is its direction.
struct Case {
    const char* line;
    const char* redacted;
};

std::string redact(Redaction& redaction, const char* line) {
    return line[0] + redaction.redact(line[0], line + 1);
}

TEST(RedactionTest, PathsAndNamesAreReplaced) {
    const Case cases[] = {
        {"<DOWNLOADED|/home/me/shots/OWN00001.ARW", "<DOWNLOADED|<folder>/<file 1>.ARW"},
        {"<DOWNLOADED|/home/me/shots/OWN00001.JPG", "<DOWNLOADED|<folder>/<file 1>.JPG"},
        {"<LOG|[SONY] landed OWN00002.JPG", "<LOG|[SONY] landed <file 2>.JPG"},
        {"<LOG|[SONY] landed /home/me/OWN00002.JPG", "<LOG|[SONY] landed <folder>/<file 2>.JPG"},
        {"<DOWNLOADED|/home/me/no extension", "<DOWNLOADED|<folder>/<file 3>"},
        {"<DOWNLOADED|/home/me/1.for me", "<DOWNLOADED|<folder>/<file 4>"},
        {"<DOWNLOADED|/home/me/1.Mine", "<DOWNLOADED|<folder>/<file 5>.Mine"},
        {"<DOWNLOADED|/home/me/1.MineToo", "<DOWNLOADED|<folder>/<file 6>"},
        {"<LOG|[SONY] landed 100%|a.JPG", "<LOG|[SONY] landed <file 7>.JPG"},
        {"<DOWNLOADED|/home/me/100%25%7Ca.JPG", "<DOWNLOADED|<folder>/<file 7>.JPG"},
        {">SET_DOWNLOAD_DIR|/home/me%7C/shots", ">SET_DOWNLOAD_DIR|<folder>"},
        {">set_download_dir|My shots", ">set_download_dir|<folder>"},
        {"<DOWNLOAD_DIR|/home/me%7C/shots", "<DOWNLOAD_DIR|<folder>"},
        {"<DOWNLOAD_DIR|", "<DOWNLOAD_DIR|"},
        {"<LOG|[SONY] camera \"My own \"A\"\" over USB",
         "<LOG|[SONY] camera \"<camera 1>\" over USB"},
        {"<CONNECTED|My own \"A\"", "<CONNECTED|<camera 1>"},
        {"<CONNECTED|100%25 mine", "<CONNECTED|<camera 2>"},
        {"<LOG|[SONY] USB transport adapters found: /Users/me/x y/CrAdapter",
         "<LOG|[SONY] USB transport adapters found: <path>"},
        {"<LOG|[SONY] USB transport adapters are MISSING from /Users/me/x — the SDK will not see "
         "any camera (0x8703)",
         "<LOG|[SONY] USB transport adapters are MISSING from <path> — the SDK will not see any "
         "camera (0x8703)"},
    };
    Redaction redaction;
    for (const Case& one : cases) {
        EXPECT_EQ(redact(redaction, one.line), one.redacted);
    }
}

TEST(RedactionTest, KnownNamesAreFoundInFreeText) {
    Redaction redaction;
    redact(redaction, "<CONNECTED|100%25 mine");
    redact(redaction, "<DOWNLOADED|/home/me/OWN00001.JPG");
    redact(redaction, "<DOWNLOADED|/home/me/on.JPG");
    const Case cases[] = {
        {"<STATUS|OWN00001.JPG is late", "<STATUS|<file 1>.JPG is late"},
        {"<LOG|[SONY] 100% mine: OWN00001, OWN000012",
         "<LOG|[SONY] <camera 1>: <file 1>, OWN000012"},
        {">DELETE|100%25 mine|OWN00001", ">DELETE|<camera 1>|<file 1>"},
        {">DELETE|shots of/mine", ">DELETE|shots <path>"},
        {"<ERROR|Unknown command: DELETE|/home/me", "<ERROR|Unknown command: DELETE|<path>"},
        {"<ERROR|Unknown command: set_download_dirs|My shots",
         "<ERROR|Unknown command: set_download_dirs|My shots"},
        {"<ERROR|Unknown file type: shots/OWN00001", "<ERROR|Unknown file type: <path>"},
        {"<STATUS|on the way", "<STATUS|on the way"},
    };
    for (const Case& one : cases) {
        EXPECT_EQ(redact(redaction, one.line), one.redacted);
    }
}

TEST(RedactionTest, WhatIsNoMessageIsLeftOut) {
    // The rest of a file name with a line break in it, and what somebody typed by mistake.
    Redaction redaction;
    for (const char* line : {"<Mine.JPG", "<Mine", "<b|c d.JPG|", "<2|b", "<|", "<LOG|of mine",
                             ">|", ">This is mine", ">/home/me|"}) {
        EXPECT_EQ(redact(redaction, line), line[0] + std::string("<text>"));
    }
    EXPECT_EQ(redact(redaction, "<ERROR|Unknown command: This is mine"),
              "<ERROR|Unknown command: <text>");
}

TEST(RedactionTest, EverythingElseStaysAsItIs) {
    Redaction redaction;
    const char* const log =
        "<LOG|[SONY] could not set the save destination (0x00008402) — the camera keeps its own "
        "setting";
    for (const char* line : {">QUIT", ">CONNECT|card", ">capture", "<CONNECTED|already",
                             "<READY|OK", "<", ">", "<FILE_TYPE|raw", log}) {
        EXPECT_EQ(redact(redaction, line), line);
    }
}

}  // namespace

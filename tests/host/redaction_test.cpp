// What a redacted record still tells.
#include "host/redaction.h"

#include <gtest/gtest.h>

namespace {

using tether::Redaction;

TEST(RedactionTest, PathsAndNamesAreReplaced) {
    struct Case {
        const char* line;
        const char* redacted;
    };
    const Case cases[] = {
        {"DOWNLOADED|/home/kim/shots/KIM00001.ARW", "DOWNLOADED|<folder>/<file 1>.ARW"},
        {"DOWNLOADED|/home/kim/shots/KIM00001.JPG", "DOWNLOADED|<folder>/<file 1>.JPG"},
        {"LOG|[SONY] landed KIM00002.JPG", "LOG|[SONY] landed <file 2>.JPG"},
        {"DOWNLOADED|/home/kim/no extension", "DOWNLOADED|<folder>/<file 3>"},
        {"SET_DOWNLOAD_DIR|/home/kim%7C/shots", "SET_DOWNLOAD_DIR|<folder>"},
        {"DOWNLOAD_DIR|/home/kim%7C/shots", "DOWNLOAD_DIR|<folder>"},
        {"DOWNLOAD_DIR|", "DOWNLOAD_DIR|"},
        {"LOG|[SONY] camera \"Kim's \"A\"\" over USB", "LOG|[SONY] camera \"<camera 1>\" over USB"},
        {"CONNECTED|Kim's \"A\"", "CONNECTED|<camera 1>"},
        {"CONNECTED|another", "CONNECTED|<camera 2>"},
        {"LOG|[SONY] USB transport adapters found: /Users/kim/x y/CrAdapter",
         "LOG|[SONY] USB transport adapters found: <path>"},
        {"LOG|[SONY] USB transport adapters are MISSING from /Users/kim/x — the SDK will not see "
         "any camera (0x8703)",
         "LOG|[SONY] USB transport adapters are MISSING from <path> — the SDK will not see any "
         "camera (0x8703)"},
        {"set_download_dir|/home/kim", "set_download_dir|<path>"},
    };
    Redaction redaction;
    for (const Case& one : cases) {
        EXPECT_EQ(redaction.redact(one.line), one.redacted);
    }
}

TEST(RedactionTest, EverythingElseStaysAsItIs) {
    Redaction redaction;
    for (const char* line :
         {"QUIT", "CONNECT|card", "CONNECTED|already", "READY|OK", "", "|", "FILE_TYPE|raw",
          "LOG|[SONY] could not set the save destination (0x00008402) — the camera keeps its own "
          "setting"}) {
        EXPECT_EQ(redaction.redact(line), line);
    }
}

}  // namespace

// The folder and the camera's name are read on the SDK's threads while the main thread changes
// them: a reader gets one of the texts, whole.

#include <atomic>
#include <functional>
#include <gtest/gtest.h>
#include <string>
#include <thread>
#include <vector>

#include "session/sony_worker.h"
#include "tests/worker/crossings/event.h"
#include "tests/worker/crossings/output_file.h"
#include "tests/worker/crossings/points.h"
#include "threads/command_queue.h"

namespace {

// Long enough for memory of their own.
constexpr int lengths[] = {1000, 600};

std::string repeated(const std::string& text, int length) {
    std::string result;
    for (int at = 0; at < length; at += static_cast<int>(text.size())) {
        result += text;
    }
    return result;
}

const std::string folders[] = {repeated("/a", lengths[0]), repeated("/b", lengths[1])};

// Escaping makes these longer while they are being read.
const std::string names[] = {repeated("a|", lengths[0]), repeated("b%", lengths[1])};
const std::string escaped_names[] = {repeated("a%7C", 2 * lengths[0]),
                                     repeated("b%25", 2 * lengths[1])};

struct Interruption {
    Event begun;
    Event over;
};

// Runs the callback on a thread of its own as often as it allocates memory; each time it stands at
// another of its allocations while `meanwhile` runs here. Returns how often that was.
int at_every_allocation(const std::function<void()>& callback,
                        const std::function<void()>& meanwhile) {
    for (int chosen = 0;; ++chosen) {
        Interruption interruption;
        bool interrupted = false;
        std::thread sdk_thread([&] {
            {
                int allocation = 0;
                const Visits visits([&](Point point) {
                    if (point == Point::allocation && allocation++ == chosen) {
                        interrupted = true;
                        interruption.begun.happen();
                        interruption.over.await();
                    }
                });
                callback();
            }
            interruption.begun.happen();
        });
        interruption.begun.await();
        meanwhile();
        // What was given back is used for something else, as it soon would be.
        const std::vector<std::string> others{std::string(lengths[0], 'x'),
                                              std::string(lengths[1], 'x')};
        interruption.over.happen();
        sdk_thread.join();
        if (!interrupted) {
            return chosen;
        }
    }
}

void publish_in_turn(PublishedString& text, const std::string (&texts)[2]) REQUIRES(main_thread) {
    text.publish(text.get() == texts[0] ? texts[1] : texts[0]);
}

void report_file(SonyWorker& worker) {
    char name[] = "a.JPG";
    worker.OnCompleteDownload(name, 0xFFFFFFFF);
}

void report_session(SonyWorker& worker) {
    worker.OnConnected(SCRSDK::DeviceConnectionVersioin(3));
}

// Every line with this key must carry one of the two payloads.
int count_whole(const std::vector<std::string>& lines, const std::string& key,
                const std::string& first, const std::string& second) {
    const std::string begin = key + "|";
    const std::string one = begin + first;
    const std::string other = begin + second;
    int count = 0;
    for (const std::string& line : lines) {
        if (line.rfind(begin, 0) == 0) {
            ++count;
            EXPECT_TRUE(line == one || line == other) << line;
        }
    }
    return count;
}

void empty_queue() REQUIRES(main_thread) {
    post_command("(the last one)");
    while (next_command() != "(the last one)") {}
}

TEST(PublishedTexts, TheFolderMayChangeWhereverACallbackReadsIt) {
    main_thread.assume();
    SonyWorker worker;
    worker.download_dir.publish(folders[0]);
    OutputFile output;
    const int interruptions = at_every_allocation([&] { report_file(worker); },
                                                  [&] {
                                                      main_thread.assume();
                                                      publish_in_turn(worker.download_dir, folders);
                                                  });
    EXPECT_GE(interruptions, 3);
    EXPECT_EQ(
        count_whole(output.take(), "DOWNLOADED", folders[0] + "/a.JPG", folders[1] + "/a.JPG"),
        interruptions + 1);
}

TEST(PublishedTexts, TheNameMayChangeWhereverACallbackReadsIt) {
    main_thread.assume();
    SonyWorker worker;
    worker.camera_name.publish(names[0]);
    OutputFile output;
    const int interruptions = at_every_allocation([&] { report_session(worker); },
                                                  [&] {
                                                      main_thread.assume();
                                                      publish_in_turn(worker.camera_name, names);
                                                  });
    EXPECT_GE(interruptions, 3);
    EXPECT_EQ(count_whole(output.take(), "CONNECTED", escaped_names[0], escaped_names[1]),
              interruptions + 1);
    empty_queue();
}

TEST(PublishedTexts, StayWholeWhileBothSidesRunFreely) {
    main_thread.assume();
    constexpr int rounds = 2000;
    SonyWorker worker;
    worker.download_dir.publish(folders[0]);
    worker.camera_name.publish(names[0]);
    OutputFile output;
    std::atomic<int> reported{0};
    std::thread files([&] {
        for (int round = 0; round < rounds; ++round) {
            report_file(worker);
            reported.fetch_add(1, std::memory_order_relaxed);
        }
    });
    std::thread sessions([&] {
        for (int round = 0; round < rounds; ++round) {
            report_session(worker);
            reported.fetch_add(1, std::memory_order_relaxed);
        }
    });
    // Paced by the readers, without any order between what is published and what is read.
    for (int round = 0; round < 2 * rounds; ++round) {
        while (reported.load(std::memory_order_relaxed) < round) {
            std::this_thread::yield();
        }
        publish_in_turn(worker.download_dir, folders);
        publish_in_turn(worker.camera_name, names);
    }
    files.join();
    sessions.join();
    const std::vector<std::string> lines = output.take();
    EXPECT_EQ(count_whole(lines, "DOWNLOADED", folders[0] + "/a.JPG", folders[1] + "/a.JPG"),
              rounds);
    EXPECT_EQ(count_whole(lines, "CONNECTED", escaped_names[0], escaped_names[1]), rounds);
    empty_queue();
}

}  // namespace

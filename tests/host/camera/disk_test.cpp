// The disk's thread, with a disk that does what the test wants.
#include "host/camera/disk.h"

#include <condition_variable>
#include <gtest/gtest.h>
#include <poll.h>

namespace {

using host::MutexLock;

// A disk that is stuck until it is let go.
struct StuckDisk {
    host::Mutex mutex;
    std::condition_variable changed;
    bool stuck HOST_GUARDED_BY(mutex) = true;
    bool hurried HOST_GUARDED_BY(mutex) = false;
    std::vector<host::Ticket> done HOST_GUARDED_BY(mutex);

    void let_go() {
        {
            const MutexLock lock(mutex);
            stuck = false;
        }
        changed.notify_all();
    }
    std::optional<host::FileAnswer> work(const host::FileWork& work) {
        const MutexLock lock(mutex);
        while (stuck) {
            mutex.wait(changed);
        }
        const auto& examine = std::get<host::Examine>(work);
        done.push_back(examine.ticket);
        host::Examined examined;
        examined.ticket = examine.ticket;
        return examined;
    }
};

host::DiskWork work_of(const std::shared_ptr<StuckDisk>& disk) {
    return {[disk](const host::FileWork& work) { return disk->work(work); },
            [](const host::ListWork&) { return std::vector<host::Picture>(3); },
            [disk] {
                const MutexLock lock(disk->mutex);
                disk->hurried = true;
            }};
}

host::Examine examine(host::Ticket ticket) {
    host::Examine work;
    work.ticket = ticket;
    return work;
}

// The next messages, waited for.
std::vector<host::Message> next(host::Inbox& inbox) {
    pollfd source{inbox.descriptor(), POLLIN, 0};
    EXPECT_EQ(poll(&source, 1, 30'000), 1);
    return inbox.take();
}

TEST(DiskTest, WorkIsDoneInOrderAndAnswered) {
    const auto disk = std::make_shared<StuckDisk>();
    disk->let_go();
    const auto inbox = std::make_shared<host::Inbox>();
    host::Disk thread(work_of(disk), inbox);
    for (host::Ticket ticket = 1; ticket <= 100; ++ticket) {
        thread.ask(examine(ticket));
    }
    thread.list({7, "folder", "", 10});
    host::Ticket expected = 0;
    for (bool listed = false; !listed;) {
        for (const host::Message& message : next(*inbox)) {
            if (const auto* answer = std::get_if<host::FileAnswer>(&message)) {
                EXPECT_EQ(std::get<host::Examined>(*answer).ticket, ++expected);
            } else {
                const auto& list = std::get<host::Listed>(message);
                EXPECT_EQ(list.number, 7u);
                EXPECT_EQ(list.pictures.value_or(std::vector<host::Picture>{}).size(), 3u);
                listed = true;
            }
        }
    }
    EXPECT_EQ(expected, 100u);
}

// A thread that does not end is waited for, 2 s each time.
TEST(DiskTest, ItWaitsForMoreWorkAndEndsAtOnceWithoutAny) {
    const auto begun = host::Clock::now();
    for (int round = 0; round < 10; ++round) {
        const auto disk = std::make_shared<StuckDisk>();
        disk->let_go();
        const auto inbox = std::make_shared<host::Inbox>();
        host::Disk thread(work_of(disk), inbox);
        for (host::Ticket ticket = 1; ticket <= 10; ++ticket) {
            thread.ask(examine(ticket));
            ASSERT_EQ(next(*inbox).size(), 1u);
        }
    }
    EXPECT_LT(host::Clock::now() - begun, std::chrono::seconds(10));
}

TEST(DiskTest, WhatWasAskedIsDoneBeforeTheEnd) {
    const auto disk = std::make_shared<StuckDisk>();
    disk->let_go();
    const auto inbox = std::make_shared<host::Inbox>();
    {
        host::Disk thread(work_of(disk), inbox);
        for (host::Ticket ticket = 1; ticket <= 100; ++ticket) {
            thread.ask(examine(ticket));
        }
    }
    const MutexLock lock(disk->mutex);
    EXPECT_EQ(disk->done.size(), 100u);
    EXPECT_TRUE(disk->hurried);
}

TEST(DiskTest, ADiskThatIsStuckHoldsUpNobodyWhoEnds) {
    const auto disk = std::make_shared<StuckDisk>();
    const auto inbox = std::make_shared<host::Inbox>();
    const auto begun = host::Clock::now();
    {
        host::Disk thread(work_of(disk), inbox);
        thread.ask(examine(1));
    }
    EXPECT_LT(host::Clock::now() - begun, std::chrono::seconds(10));
    EXPECT_EQ(disk.use_count(), 2) << "the thread that is stuck holds what it uses";
    disk->let_go();
    const auto messages = next(*inbox);
    ASSERT_EQ(messages.size(), 1u);
    EXPECT_TRUE(std::holds_alternative<host::FileAnswer>(messages.front()));
}

}  // namespace

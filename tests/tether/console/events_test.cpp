#include "tether/console/events.h"

#include <gtest/gtest.h>
#include <string>
#include <thread>
#include <vector>

#include "tether/rpc/json.h"

namespace console {
namespace {

struct Told {
    std::string id;
    std::string event;
    std::string data;
};

std::vector<Told> read(const std::string& text) {
    std::vector<Told> all;
    Told one;
    std::size_t begin = 0;
    for (std::size_t end = 0; (end = text.find('\n', begin)) != std::string::npos;
         begin = end + 1) {
        const std::string line = text.substr(begin, end - begin);
        if (line.empty()) {
            all.push_back(one);
            one = {};
        } else if (line.starts_with("id: ")) {
            one.id = line.substr(4);
        } else if (line.starts_with("event: ")) {
            one.event = line.substr(7);
        } else if (line.starts_with("data: ")) {
            one.data = line.substr(6);
        }
    }
    return all;
}

// Everything that is there by now.
std::vector<Told> all_of(Events& events, Events::Reader& reader) {
    std::vector<Told> all;
    while (true) {
        const auto text = events.next(reader, host::TimePoint{});
        if (!text || *text == ":\n\n") {
            return all;
        }
        for (Told& one : read(*text)) {
            all.push_back(std::move(one));
        }
    }
}

std::string data_of(const std::vector<Told>& all) {
    std::string text;
    for (const Told& one : all) {
        text += (text.empty() ? "" : " ") + (one.event.empty() ? one.data : one.event);
    }
    return text;
}

std::string data_after(Events& events, const std::string& id, bool lines = false) {
    auto reader = events.reader(id, lines);
    return data_of(all_of(events, reader));
}

std::string line(int number, int dropped = 0) {
    return R"({"method":"line","params":{"text":")" + std::to_string(number) + R"(","dropped":)" +
           std::to_string(dropped) + "}}";
}

TEST(Events, BeginWithTheStateAndGoOnFromNow) {
    Events events;
    events.tell("before");
    events.tell_state("s1");
    events.tell_state("s2");
    auto reader = events.reader("", false);
    EXPECT_EQ(data_of(all_of(events, reader)), "s2");
    events.tell("after");
    events.tell_state("s3");
    EXPECT_EQ(data_of(all_of(events, reader)), "after s3");
}

TEST(Events, OfAPageThatComesBackMissNothing) {
    Events events;
    events.tell_state("s1");
    auto reader = events.reader("", false);
    std::vector<Told> first = all_of(events, reader);
    events.tell("a");
    first = all_of(events, reader);
    events.tell("b");
    events.tell("c");
    EXPECT_EQ(data_after(events, first.back().id), "b c");
    EXPECT_EQ(data_after(events, first.back().id), "b c") << "twice is as good as once";
}

TEST(Events, OfTheStateCanBeTheLastThatAPageKnows) {
    Events events;
    events.tell("a");
    events.tell_state("s1");
    auto reader = events.reader("", false);
    const std::string id = all_of(events, reader).back().id;
    events.tell("b");
    EXPECT_EQ(data_after(events, id), "b");
}

TEST(Events, SinceTheStartAreToldToWhoAsks) {
    Events events;
    events.tell_state("s1");
    events.tell("a");
    events.tell_line(line(1));
    events.tell_call("call");
    EXPECT_EQ(data_after(events, "0"), "s1 a");
    EXPECT_EQ(data_after(events, "0", true), "s1 a " + line(1) + " call");
}

TEST(Events, ThatAreTooOldAreSaidToBeMissed) {
    Events events(1000);
    events.tell_state("s1");
    auto reader = events.reader("", false);
    const std::string id = all_of(events, reader).back().id;
    for (int count = 0; count < 100; ++count) {
        events.tell("n" + std::to_string(count));
    }
    events.tell_state("s2");
    const auto told = all_of(events, reader);
    ASSERT_GE(told.size(), 4U);
    EXPECT_EQ(told[0].event, "missed");
    EXPECT_EQ(rpc::Json::parse(told[0].data)["method"], "missed");
    EXPECT_EQ(told[1].data, "s2");
    EXPECT_EQ(told[told.size() - 2].data, "n99");
    EXPECT_EQ(told.back().data, "s2");
    const std::string again = data_after(events, id);
    EXPECT_EQ(again.substr(0, 9), "missed s2") << again;
    // And from there it goes on as usual.
    events.tell("next");
    EXPECT_EQ(data_of(all_of(events, reader)), "next");
}

TEST(Events, OfAnotherRunAreSaidToBeMissed) {
    Events events;
    events.tell_state("s1");
    events.tell("a");
    for (const std::string id : {"1-1-1", "x", "-", "99999999999999999999", "0-0", "1"}) {
        EXPECT_EQ(data_after(events, id), "missed s1 s1 a") << id;
    }
    auto reader = events.reader("", false);
    const std::string id = all_of(events, reader).back().id;
    EXPECT_EQ(data_after(events, id + "x"), "missed s1 s1 a");
    EXPECT_EQ(data_after(events, id + "\n"), "missed s1 s1 a");
    // Of the future: this run has not told so many.
    EXPECT_EQ(data_after(events, id.substr(0, id.find('-')) + "-1000-0"), "missed s1 s1 a");
}

TEST(Events, OfLinesAreForWhoWantsThem) {
    Events events;
    events.tell_state("s1");
    auto quiet = events.reader("", false);
    auto all = events.reader("", true);
    events.tell_line(line(1));
    events.tell("a");
    EXPECT_EQ(data_of(all_of(events, quiet)), "s1 a");
    EXPECT_EQ(data_of(all_of(events, all)), "s1 " + line(1) + " a");
    events.want_lines(true);
    events.tell_line(line(2));
    events.tell_call("call");
    EXPECT_EQ(data_of(all_of(events, quiet)), line(2)) << "nothing that it did not ask for is lost";
    events.want_lines(false);
    events.tell_line(line(3));
    EXPECT_EQ(data_of(all_of(events, quiet)), "");
}

TEST(Events, AFloodOfLinesCostsLinesOnly) {
    Events events(2000);
    events.tell("first");
    auto reader = events.reader("", true);
    for (int count = 1; count <= 100; ++count) {
        events.tell_line(line(count));
    }
    events.tell("last");
    const auto told = all_of(events, reader);
    ASSERT_GT(told.size(), 2U);
    EXPECT_EQ(told.back().data, "last");
    const auto oldest = rpc::Json::parse(told.front().data)["params"];
    EXPECT_EQ(std::stoi(oldest["text"].get<std::string>()), oldest["dropped"].get<int>() + 1);
    const auto next = rpc::Json::parse(told[1].data)["params"];
    EXPECT_EQ(next["dropped"], 0);
    EXPECT_EQ(data_after(events, "0"), "first last");
}

TEST(Events, TheNumberOfLostLinesIsRightForAPageThatComesBack) {
    Events events(2000);
    events.tell_state("s");
    auto reader = events.reader("", true);
    events.tell_line(line(1));
    events.tell_line(line(2));
    const std::string id = all_of(events, reader).back().id;
    for (int count = 3; count <= 100; ++count) {
        events.tell_line(line(count, count == 100 ? 7 : 0));
    }
    auto back = events.reader(id, true);
    const auto told = all_of(events, back);
    const auto oldest = rpc::Json::parse(told.front().data)["params"];
    EXPECT_EQ(std::stoi(oldest["text"].get<std::string>()), oldest["dropped"].get<int>() + 3);
    EXPECT_EQ(rpc::Json::parse(told.back().data)["params"]["dropped"], 7);
}

TEST(Events, WakeWhoWaits) {
    Events events;
    auto reader = events.reader("", false);
    std::thread telling([&] { events.tell("a"); });
    EXPECT_EQ(read(*events.next(reader, host::TimePoint::max())).front().data, "a");
    telling.join();
    std::thread ending([&] {
        events.tell("last");
        events.end();
    });
    EXPECT_EQ(read(*events.next(reader, host::TimePoint::max())).front().data, "last");
    EXPECT_EQ(events.next(reader, host::TimePoint::max()), std::nullopt);
    ending.join();
}

TEST(Events, WithNothingNewSayThatTheyAreThere) {
    Events events;
    auto reader = events.reader("", false);
    EXPECT_EQ(events.next(reader, host::TimePoint{}), ":\n\n");
}

TEST(Events, EndForTheOldestOfTooManyReaders) {
    Events events;
    auto oldest = events.reader("", false);
    auto second = events.reader("", false);
    for (std::uint64_t count = 2; count < Events::most_readers; ++count) {
        static_cast<void>(events.reader("", false));
    }
    EXPECT_EQ(events.next(oldest, host::TimePoint{}), ":\n\n");
    static_cast<void>(events.reader("", false));
    EXPECT_EQ(events.next(oldest, host::TimePoint::max()), std::nullopt);
    EXPECT_EQ(events.next(second, host::TimePoint{}), ":\n\n");
}

}  // namespace
}  // namespace console

#include "feed/EventFeed.h"

#include <algorithm>
#include <set>
#include <vector>

#include <gtest/gtest.h>

using boardweb::EventFeed;
using boardweb::EventRing;

namespace {

class Connection : public EventFeed::Connection {
public:
    void pause() override { isPaused = true; }
    void resume() override { isPaused = false; }

    bool isPaused = false;
};

class EventFeedTest : public testing::Test {
protected:
    /// What the reader gets until it is paused, in parts of at most `size` bytes.
    static std::string readAll(EventFeed::Reader& reader, std::size_t size = 4096) {
        std::string text;
        std::vector<char> buffer(size);
        for (std::ptrdiff_t count = 1; count > 0;) {
            count = reader.read(buffer.data(), size);
            text.append(buffer.data(),
                        static_cast<std::size_t>(std::max<std::ptrdiff_t>(count, 0)));
        }
        return text;
    }

    static std::string message(const std::string& number, const std::string& rest) {
        return "id: run-" + number + "\nevent: " + rest + "\n\n";
    }

    int m_joined = 0;
    EventFeed m_feed{"run", [this] { ++m_joined; }};
    Connection m_connection;
};

const std::string RETRY = "retry: 1000\n\n";

} // namespace

TEST_F(EventFeedTest, ANewReaderGetsThePresentStateAndThenWhatHappens) {
    m_feed.publish(EventFeed::HOST, "1");
    m_feed.publish(EventFeed::STATUS, "2");
    m_feed.publish(EventFeed::LEDS, "3");
    m_feed.publish(EventFeed::STATUS, "4");
    m_feed.publish(EventFeed::BOARD, "5");
    m_feed.forget(EventFeed::LEDS);
    const auto reader = m_feed.join("", m_connection);
    EXPECT_EQ(m_joined, 1);
    EXPECT_EQ(readAll(*reader),
              RETRY + message("0", "host\ndata: 1") + message("5", "status\ndata: 4"));
    EXPECT_TRUE(m_connection.isPaused);
    m_feed.publish(EventFeed::LEDS, "6");
    EXPECT_FALSE(m_connection.isPaused);
    m_feed.keepAlive();
    EXPECT_EQ(readAll(*reader, 3), message("6", "leds\ndata: 6") + ":\n\n");
    m_feed.end();
    EXPECT_FALSE(m_connection.isPaused);
    char byte = 0;
    EXPECT_EQ(reader->read(&byte, 1), EventFeed::Reader::END);
}

TEST_F(EventFeedTest, AReaderContinuesOnlyAfterAMessageOfThisRun) {
    m_feed.publish(EventFeed::HOST, "1");
    m_feed.publish(EventFeed::BOARD, "2");
    m_feed.publish(EventFeed::BOARD, "3");
    const std::string afterFirst = message("2", "board\ndata: 2") + message("3", "board\ndata: 3"),
                      present = message("3", "host\ndata: 1");
    const struct {
        const char* lastId;
        std::string text;
    } CASES[] = {
        {"run-1", afterFirst},
        {"run-3", ""},
        {"run-0", present},
        {"run-4", present},
        {"run-18446744073709551617", present},
        {"run-1 ", present},
        {"run--1", present},
        {"run-", present},
        {"runs1", present},
        {"old-1", present},
    };
    for (const auto& each : CASES)
        EXPECT_EQ(readAll(*m_feed.join(each.lastId, m_connection)), RETRY + each.text)
            << each.lastId;
}

TEST_F(EventFeedTest, AReaderThatIsTooSlowIsToldHowMuchItHasLost) {
    m_feed.publish(EventFeed::HOST, "1");
    const auto reader = m_feed.join("", m_connection);
    char byte = 0;
    ASSERT_EQ(reader->read(&byte, 1), 1); // has begun the first text
    const std::string data(EventFeed::RING_BYTES / 4, 'x');
    for (int i = 0; i < 9; ++i)
        m_feed.publish(EventFeed::BOARD, data);
    EXPECT_EQ(byte + readAll(*reader), RETRY + message("1", "host\ndata: 1") +
                                           message("0", "lost\ndata: {\"messages\":9}") +
                                           message("10", "host\ndata: 1"));
    m_feed.publish(EventFeed::BOARD, data + data + data + data); // kept, although it is too large
    EXPECT_EQ(readAll(*reader).size(), message("11", "board\ndata: ").size() + 4 * data.size());
}

TEST_F(EventFeedTest, ReadersThatNeverReadShareTheTextsThatTheyAreSent) {
    const std::string status(1000, 's');
    m_feed.publish(EventFeed::STATUS, status);
    std::vector<std::unique_ptr<EventFeed::Reader>> readers;
    const auto longTexts = [&] {
        std::set<EventRing::Text> texts;
        for (const auto& reader : readers)
            for (const EventRing::Text& text : reader->texts())
                if (text->size() > status.size())
                    texts.insert(text);
        return texts.size();
    };
    for (std::size_t i = 0; i < EventFeed::MOST_READERS; ++i) {
        readers.push_back(m_feed.join("", m_connection));
        m_feed.publish(EventFeed::LEDS, "1"); // the status is still the same
    }
    EXPECT_EQ(longTexts(), 1U);
    for (const auto& reader : readers)
        readAll(*reader);
    EXPECT_EQ(longTexts(), 0U);
    m_feed.publish(EventFeed::BOARD, std::string(EventFeed::RING_BYTES, 'x'));
    m_feed.publish(EventFeed::BOARD, "");
    char byte = 0;
    for (const auto& reader : readers) {
        EXPECT_EQ(reader->read(&byte, 1), 1); // has lost a message
        m_feed.publish(EventFeed::LEDS, "2");
    }
    EXPECT_EQ(longTexts(), 1U);
}

TEST_F(EventFeedTest, AcceptsAReaderOnceAnotherOneHasLeft) {
    std::vector<std::unique_ptr<EventFeed::Reader>> readers;
    for (std::size_t i = 0; i < EventFeed::MOST_READERS; ++i)
        readers.push_back(m_feed.join("", m_connection));
    EXPECT_FALSE(m_feed.join("", m_connection));
    readers.pop_back();
    EXPECT_TRUE(m_feed.join("", m_connection));
}

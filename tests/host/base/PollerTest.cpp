#include "base/Poller.h"

#include <string>

#include <gtest/gtest.h>

#include "base/Error.h"
#include "base/File.h"

using board::FileDescriptor;
using board::Poller;

namespace {

struct Pipe {
    Pipe() { EXPECT_TRUE(board::tryMakePipe(readEnd, writeEnd)); }
    FileDescriptor readEnd, writeEnd;
};

} // namespace

TEST(Poller, CallsTheActionsOfWhatIsReadyUntilTheyAreRemoved) {
    Poller poller;
    Pipe first, second;
    std::string calls;
    poller.add(first.readEnd.number(), [&] {
        calls += "1";
        poller.remove(first.readEnd.number());
        poller.remove(second.readEnd.number()); // is ready too
    });
    poller.add(second.readEnd.number(), [&] { calls += "2"; });
    poller.serve();
    EXPECT_EQ(calls, "");
    second.writeEnd.close(); // the end of a pipe counts as readable
    poller.serve();
    poller.serve();
    EXPECT_EQ(calls, "22");
    first.writeEnd.close();
    poller.remove(second.readEnd.number());
    poller.add(second.readEnd.number(), [&] { calls += "3"; });
    calls.clear();
    poller.serve();
    EXPECT_EQ(calls.back(), '1') << "nothing after the removal";
    calls.clear();
    poller.serve();
    EXPECT_EQ(calls, "");
}

TEST(Poller, DoesNotTakeANewDescriptorForTheOldOneOfThatNumber) {
    Poller poller;
    Pipe pipes[2];
    int newCalls = 0;
    for (Pipe& pipe : pipes)
        poller.add(pipe.readEnd.number(), [&] { // whichever comes first replaces both
            for (Pipe& each : pipes) {
                poller.remove(each.readEnd.number());
                poller.add(each.readEnd.number(), [&] { ++newCalls; });
            }
        });
    for (Pipe& pipe : pipes)
        pipe.writeEnd.close();
    poller.serve();
    EXPECT_EQ(newCalls, 0);
    poller.serve();
    EXPECT_EQ(newCalls, 2);
}

TEST(Poller, CallsWhenWritableOnlyIfAsked) {
    Poller poller;
    Pipe pipe;
    int calls = 0;
    poller.add(pipe.writeEnd.number(), [&] { ++calls; });
    poller.serve();
    EXPECT_EQ(calls, 0);
    poller.callWhenWritable(pipe.writeEnd.number(), true);
    poller.serve();
    EXPECT_EQ(calls, 1);
    poller.callWhenWritable(pipe.writeEnd.number(), false);
    poller.serve();
    EXPECT_EQ(calls, 1);
    EXPECT_THROW(poller.add(pipe.writeEnd.number(), [] {}), board::Error) << "added twice";
}

#include "reader/pcm_queue.h"
#include "support/test_files.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <random>

namespace {

using test::Bytes;
using trnmpa::PcmQueue;

Bytes Numbered(std::size_t first, std::size_t count) {
    Bytes bytes(count);
    for (std::size_t i = 0; i < count; ++i)
        bytes[i] = static_cast<std::uint8_t>((first + i) * 167 >> 3);
    return bytes;
}

template <typename Span>
Bytes Copy(Span span) {
    return Bytes(span.begin(), span.end());
}

TEST(PcmQueue, GivesInOrderAndRemembers) {
    constexpr std::size_t kRemembered = 100;
    PcmQueue queue(kRemembered);
    std::mt19937 random(1);
    std::size_t appended = 0;
    std::size_t taken = 0;
    for (int i = 0; i < 500; ++i) {
        const std::size_t more = random() % 70;
        queue.Append(Numbered(appended, more));
        appended += more;
        ASSERT_EQ(queue.Size(), appended - taken);
        ASSERT_EQ(Copy(queue.Waiting()), Numbered(taken, appended - taken));
        const std::size_t wanted = random() % 80;
        const std::size_t given = std::min(wanted, appended - taken);
        if (random() % 4 == 0) {
            queue.Drop(wanted);
        } else {
            ASSERT_EQ(Copy(queue.Take(wanted)), Numbered(taken, given));
        }
        taken += given;
        const std::size_t back = std::min(random() % (kRemembered + 1), taken);
        ASSERT_EQ(Copy(queue.Taken(back)), Numbered(taken - back, back));
    }
}

TEST(PcmQueue, ForgetsWhatIsFarBack) {
    PcmQueue queue(10);
    for (int i = 0; i < 1000; ++i) {
        queue.Append(Numbered(0, 30));
        queue.Take(30);
    }
    EXPECT_LT(queue.Taken(1'000'000).size(), 100u);
}

TEST(PcmQueue, ClearForgetsAll) {
    PcmQueue queue(10);
    queue.Append(Numbered(0, 30));
    queue.Take(8);
    queue.Clear();
    EXPECT_EQ(queue.Size(), 0u);
    EXPECT_TRUE(queue.Taken(5).empty());
    EXPECT_TRUE(queue.Take(5).empty());
    queue.Append(Numbered(5, 3));
    EXPECT_EQ(Copy(queue.Take(9)), Numbered(5, 3));
}

} // namespace

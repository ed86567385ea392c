/// CFileReader and CFileWriter on real files.
#include "fileio/file_reader.h"
#include "fileio/file_writer.h"

#include "platform/path_samples.h"
#include "support/test_files.h"

#include <filesystem>
#include <gtest/gtest.h>
#include <limits>
#include <memory>

namespace {

namespace fs = std::filesystem;
using test::Bytes;
using trnmpa::CFileReader;
using trnmpa::CFileWriter;

class FileWrappers : public testing::Test {
protected:
    Bytes Part(std::size_t begin, std::size_t end) const {
        return Bytes(content_.begin() + static_cast<std::ptrdiff_t>(begin),
                     content_.begin() + static_cast<std::ptrdiff_t>(end));
    }

    const test::ScratchFolder scratch_;
    const Bytes content_ = test::NumberedBytes(300000);
    const fs::path path_ = scratch_.Add("file", content_);
};

TEST_F(FileWrappers, AReaderReadsAndMoves) {
    CFileReader reader;
    ASSERT_EQ(reader.Open(test::Wide(path_)), 1);
    EXPECT_EQ(reader.GetLength(), 300000);
    EXPECT_EQ(reader.GetPosition(), 0);
    Bytes buffer(100000);
    EXPECT_EQ(reader.Read(buffer.data(), 100000), 100000);
    EXPECT_EQ(buffer, Part(0, 100000));
    EXPECT_EQ(reader.GetPosition(), 100000);
    EXPECT_EQ(reader.SetPosition(299000), 1);
    EXPECT_EQ(reader.Read(buffer.data(), 100000), 1000) << "a short read stays short";
    EXPECT_EQ(Bytes(buffer.begin(), buffer.begin() + 1000), Part(299000, 300000));
    EXPECT_EQ(reader.Read(buffer.data(), 1), 0);
    EXPECT_EQ(reader.SetPosition(400000), 1);
    EXPECT_EQ(reader.Read(buffer.data(), 1), 0);
    EXPECT_EQ(reader.SetPosition(-1), 0);
    EXPECT_EQ(reader.GetPosition(), 400000);
}

TEST_F(FileWrappers, AReaderRefusesBadCounts) {
    CFileReader reader;
    ASSERT_EQ(reader.Open(test::Wide(path_)), 1);
    std::uint8_t byte = 77;
    for (const std::int32_t count : {0, -1, std::numeric_limits<std::int32_t>::min()})
        EXPECT_EQ(reader.Read(&byte, count), 0);
    EXPECT_EQ(reader.Read(nullptr, 5), 0);
    EXPECT_EQ(byte, 77);
    EXPECT_EQ(reader.GetPosition(), 0);
}

TEST_F(FileWrappers, AReaderWithoutAFile) {
    CFileReader reader;
    std::uint8_t byte = 77;
    EXPECT_EQ(reader.Open(test::Wide(scratch_.Path() / "missing")), 0);
    EXPECT_EQ(reader.Open(test::Wide(scratch_.Path())), 0);
    EXPECT_EQ(reader.Open(L""), 0);
    EXPECT_EQ(reader.Read(&byte, 1), 0);
    EXPECT_EQ(reader.GetPosition(), 0);
    EXPECT_EQ(reader.GetLength(), 0);
    EXPECT_EQ(reader.SetPosition(0), 0);
    reader.Close();
    ASSERT_EQ(reader.Open(test::Wide(path_)), 1);
    reader.Close();
    reader.Close();
    EXPECT_EQ(reader.Read(&byte, 1), 0);
    EXPECT_EQ(reader.GetLength(), 0);
    ASSERT_EQ(reader.Open(test::Wide(path_)), 1);
    EXPECT_EQ(reader.Open(test::Wide(scratch_.Path() / "missing")), 0);
    EXPECT_EQ(reader.GetLength(), 0) << "the former file is closed in any case";
}

TEST_F(FileWrappers, AReadersPositionsGoBeyondTwoGiB) {
    constexpr std::int64_t kLength = (std::int64_t{1} << 32) + 17;
    fs::resize_file(path_, static_cast<std::uintmax_t>(kLength));
    CFileReader reader;
    ASSERT_EQ(reader.Open(test::Wide(path_)), 1);
    EXPECT_EQ(reader.GetLength(), kLength);
    EXPECT_EQ(reader.SetPosition(kLength - 3), 1);
    Bytes buffer(10, 9);
    EXPECT_EQ(reader.Read(buffer.data(), 10), 3);
    EXPECT_EQ(reader.GetPosition(), kLength);
}

TEST_F(FileWrappers, AWriterWritesAndMoves) {
    CFileWriter writer;
    ASSERT_EQ(writer.Open(test::Wide(path_)), 1);
    EXPECT_EQ(fs::file_size(path_), 0u) << "what was there is gone";
    EXPECT_EQ(writer.GetPosition(), 0);
    EXPECT_EQ(writer.Write(content_.data(), 10), 10);
    EXPECT_EQ(writer.GetPosition(), 10);
    EXPECT_EQ(writer.Write(content_.data(), 0), 0);
    EXPECT_EQ(writer.SetPosition(4), 1);
    EXPECT_EQ(writer.GetPosition(), 4);
    EXPECT_EQ(writer.Write(content_.data(), 2), 2);
    EXPECT_EQ(writer.Close(), 1);
    Bytes expected = Part(0, 10);
    expected[4] = content_[0];
    expected[5] = content_[1];
    EXPECT_EQ(test::ReadFile(path_), expected);
}

TEST_F(FileWrappers, AWriterWithoutAFile) {
    CFileWriter writer;
    EXPECT_EQ(writer.GetPosition(), 0);
    EXPECT_EQ(writer.SetPosition(0), 0);
    EXPECT_EQ(writer.Write(content_.data(), 10), 0);
    EXPECT_EQ(writer.Close(), 1);
    EXPECT_EQ(writer.Open(test::Wide(scratch_.Path())), 0);
    EXPECT_EQ(writer.Open(test::Wide(scratch_.Path() / "nowhere" / "file")), 0);
    EXPECT_EQ(writer.Write(content_.data(), 10), 0);
    EXPECT_EQ(writer.Close(), 1);
}

TEST_F(FileWrappers, AWriterMayBeClosedAgain) {
    CFileWriter writer;
    ASSERT_EQ(writer.Open(test::Wide(path_)), 1);
    EXPECT_EQ(writer.Write(content_.data(), 5), 5);
    for (int again = 0; again < 3; ++again)
        EXPECT_EQ(writer.Close(), 1);
    EXPECT_EQ(writer.Write(content_.data(), 5), 0);
    EXPECT_EQ(writer.GetPosition(), 0);
    EXPECT_EQ(writer.SetPosition(0), 0);
    EXPECT_EQ(fs::file_size(path_), 5u);
    ASSERT_EQ(writer.Open(test::Wide(scratch_.Path() / "other")), 1);
    EXPECT_EQ(writer.Write(content_.data(), 6), 6);
    EXPECT_EQ(fs::file_size(path_), 5u);
}

TEST_F(FileWrappers, DestructionClosesTheFile) {
    auto writer = std::make_unique<CFileWriter>();
    auto reader = std::make_unique<CFileReader>();
    ASSERT_EQ(reader->Open(test::Wide(path_)), 1);
    ASSERT_EQ(writer->Open(test::Wide(scratch_.Path() / "written")), 1);
    reader.reset();
    writer.reset();
    fs::rename(path_, scratch_.Path() / "first");
    fs::rename(scratch_.Path() / "written", scratch_.Path() / "second");
}

} // namespace

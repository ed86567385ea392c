/// A stream over memory that writes down what it is asked.
#pragma once

#include "fileio/file_stream_interface.h"
#include "support/test_files.h"

#include <string>
#include <utility>
#include <vector>

namespace test {

class RecordingStream : public trnmpa::IFileStream {
public:
    explicit RecordingStream(Bytes bytes = {}) : content(std::move(bytes)) {}

    unsigned long AddRef() override;
    unsigned long GetRef() override;
    unsigned long Release() override;
    std::int32_t Open(const std::wstring& path, std::uint32_t mode) override;
    std::int32_t Close() override;
    std::uint32_t Read(void* buffer, std::uint32_t count) override;
    std::uint32_t Write(const void* buffer, std::uint32_t count) override;
    std::int64_t Seek(std::int64_t offset, std::uint32_t origin) override;
    std::int64_t GetLength() override;
    std::int64_t GetPosition() override;

    /// The calls since the last time, as "read 8" or "seek 5 0" (offset, origin).
    std::vector<std::string> TakeCalls() { return std::exchange(calls_, {}); }

    Bytes content;
    std::wstring path;           ///< of the last Open
    std::uint32_t mode = 0;      ///< of the last Open
    std::int32_t openResult = 1; ///< of the next Open
    bool failsToRead = false;
    bool throwsOnRead = false;
    bool failsToWrite = false;
    bool failsToSeek = false;
    bool isEndless = false;       ///< reads give zeros at any position
    std::uint32_t extraBytes = 0; ///< that Read says it gave beyond those it did

private:
    void Note(const std::string& call) { calls_.push_back(call); }

    std::vector<std::string> calls_;
    std::int64_t position_ = 0;
};

} // namespace test

/// The analysis' views of open files.
#pragma once

#include "mpa/header_source.h"

class TRCT_FileAccess;

namespace trnmpa {

class CFileReader;
class CMpAudioFrameBufferReader;

/// Over the byte source of an engine; shares its position.
class FrameBufferHeaderSource final : public HeaderSource {
public:
    explicit FrameBufferHeaderSource(CMpAudioFrameBufferReader& reader) : reader_(reader) {}

    std::size_t Read(std::span<std::uint8_t> destination) override;
    std::int64_t Position() override;
    bool SetPosition(std::int64_t position) override;

private:
    std::size_t ReadOnce(std::span<std::uint8_t> destination);

    CMpAudioFrameBufferReader& reader_;
};

/// Over a file access object; shares its position.
class FileAccessHeaderSource final : public HeaderSource {
public:
    explicit FileAccessHeaderSource(TRCT_FileAccess& file) : file_(file) {}

    std::size_t Read(std::span<std::uint8_t> destination) override;
    std::int64_t Position() override;
    bool SetPosition(std::int64_t position) override;

private:
    TRCT_FileAccess& file_;
};

/// Over the index builder's media file; shares its position. A read that ends before the file does throws
/// std::runtime_error: an index of what came before must not pass for a whole one.
class FileReaderHeaderSource final : public HeaderSource {
public:
    explicit FileReaderHeaderSource(CFileReader& file) : file_(file) {}

    std::size_t Read(std::span<std::uint8_t> destination) override;
    std::int64_t Position() override;
    bool SetPosition(std::int64_t position) override;

private:
    std::size_t ReadOnce(std::span<std::uint8_t> destination);

    CFileReader& file_;
};

} // namespace trnmpa

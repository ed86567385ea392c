/// Handles of the plain C functions, linked from the shared library, for tests.
#pragma once

#include "support/loaded_module.h"
#include "support/test_files.h"
#include "trnmpafileread/c_api.h"

#include <cstdint>
#include <filesystem>
#include <memory>
#include <string>
#include <type_traits>
#include <vector>

namespace test {

struct CloseCHandle {
    void operator()(trnmpa_reader* reader) const { trnmpa_reader_close(reader); }
    void operator()(trnmpa_slices* slices) const { trnmpa_slices_close(slices); }
};
using CReader = std::unique_ptr<trnmpa_reader, CloseCHandle>;
using CSlices = std::unique_ptr<trnmpa_slices, CloseCHandle>;

inline std::string Utf8Of(const std::filesystem::path& path) {
    const std::u8string text = path.u8string();
    return {text.begin(), text.end()};
}

/// With a zero at the end.
inline std::vector<std::uint16_t> Utf16Of(const std::filesystem::path& path) {
    const std::u16string text = path.u16string();
    std::vector<std::uint16_t> units(text.begin(), text.end());
    units.push_back(0);
    return units;
}

/// A record of zeros with its size set.
template <typename Record>
Record Sized() {
    Record record = {};
    record.struct_size = sizeof record;
    return record;
}

inline CReader OpenC(const std::filesystem::path& path, trnmpa_result expected = TRNMPA_OK) {
    trnmpa_reader* reader = nullptr;
    const trnmpa_result result = trnmpa_reader_open_utf8(Utf8Of(path).c_str(), &reader);
    EXPECT_EQ(result, expected) << path << ": " << trnmpa_error_text(result);
    EXPECT_EQ(reader != nullptr, result == TRNMPA_OK);
    return CReader(reader);
}

/// What a read gave: 16-bit PCM of two channels.
struct CRead {
    trnmpa_result code = TRNMPA_OK;
    trnmpa_read_result result = Sized<trnmpa_read_result>();
    Pcm pcm;
};

inline CRead ReadC(trnmpa_reader& reader, std::int64_t start, std::uint32_t count) {
    CRead read;
    read.pcm.assign(std::size_t{count} * 2, 0x5555);
    read.code = trnmpa_reader_read(&reader, start, count, read.pcm.data(),
                                   read.pcm.size() * sizeof(std::int16_t), &read.result);
    return read;
}

} // namespace test

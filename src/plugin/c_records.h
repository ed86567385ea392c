/// Records of the plain C functions, which begin with the size that their caller knows.
#pragma once

#include "trnmpafileread/c_api.h"

#include <algorithm>
#include <cstddef>
#include <cstdint>
#include <cstring>
#include <span>
#include <type_traits>

namespace trnmpa {

/// No record will ever be larger; what claims to be is not initialised.
inline constexpr std::uint32_t kLargestRecordBytes = 4096;

/// Whether `record` is there and as large as ours at least. A record that grows needs the size that it began
/// with here.
template <typename Record>
bool IsUsable(const Record* record) {
    static_assert(std::is_trivially_copyable_v<Record> && offsetof(Record, struct_size) == 0);
    return record != nullptr && record->struct_size >= sizeof(Record) &&
           record->struct_size <= kLargestRecordBytes;
}

/// The same of a record that the caller may leave out.
template <typename Record>
bool IsUsableOrNull(const Record* record) {
    return record == nullptr || IsUsable(record);
}

/// Fills the caller's record, which IsUsable has passed; null takes nothing. What of it is unknown here
/// becomes zero.
template <typename Record>
void Give(Record* record, Record value) {
    if (record == nullptr)
        return;
    value.struct_size = record->struct_size;
    auto* bytes = reinterpret_cast<std::byte*>(record);
    std::memcpy(bytes, &value, sizeof value);
    std::fill(bytes + sizeof value, bytes + value.struct_size, std::byte{0});
}

/// Whether what of the caller's record is unknown here asks for nothing.
template <typename Record>
bool AsksForNothingUnknown(const Record& record) {
    const std::span bytes(reinterpret_cast<const std::byte*>(&record), record.struct_size);
    return std::ranges::all_of(bytes.subspan(sizeof(Record)), [](std::byte b) { return b == std::byte{0}; });
}

} // namespace trnmpa

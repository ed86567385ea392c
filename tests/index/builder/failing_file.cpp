#include "index/builder/failing_file.h"

#include <algorithm>
#include <stdexcept>

namespace test {

namespace {

/// Notes the call. True when it goes wrong and the caller is to say so.
bool GoesWrong(char call) {
    FailingDisk& disk = Disk();
    const std::size_t number = disk.calls.size();
    disk.calls.push_back(call);
    if (!disk.faultAt || number < *disk.faultAt || (number > *disk.faultAt && !disk.lasts))
        return false;
    if (disk.fault == Fault::kThrows && number == *disk.faultAt)
        throw std::runtime_error("a fault of the disk");
    return true;
}

} // namespace

FailingDisk& Disk() {
    static FailingDisk disk;
    return disk;
}

} // namespace test

std::int32_t TRCT_FileEx::Initialize(const TRCT_FILE_EX_SETTINGS& settings) {
    test::Disk().settings = settings;
    return 1;
}

std::int64_t TRCT_FileEx::Create(CComBSTR path, std::uint32_t access, std::uint32_t sharing, void* security,
                                 std::uint32_t creation, std::uint32_t attributes,
                                 std::int64_t templateHandle) {
    test::FailingDisk& disk = test::Disk();
    open_ = false;
    if (test::GoesWrong('c'))
        return 0;
    disk.path = os::CharactersOf(path);
    disk.createArguments = {access,   sharing,    security == nullptr ? 0 : 1,
                            creation, attributes, templateHandle};
    disk.content.clear();
    disk.exists = true;
    disk.isOpen = true;
    open_ = true;
    position_ = 0;
    return 77;
}

std::int64_t TRCT_FileEx::Seek(std::int64_t distance, std::uint32_t origin) {
    return test::GoesWrong('s') || distance != 0 || origin != 1 ? 0 : position_;
}

std::int32_t TRCT_FileEx::SetPosition(std::int64_t position) {
    if (test::GoesWrong('p') || !open_)
        return 0;
    position_ = position;
    return 1;
}

std::uint32_t TRCT_FileEx::Write(const void* buffer, std::uint32_t count) {
    test::FailingDisk& disk = test::Disk();
    const bool wrong = test::GoesWrong('w');
    if (!open_ || (wrong && disk.fault != test::Fault::kShort))
        return 0;
    const std::uint32_t arriving = wrong ? count / 2 : count;
    const auto begin = static_cast<std::size_t>(position_);
    disk.content.resize(std::max(disk.content.size(), begin + arriving));
    const auto* bytes = static_cast<const std::uint8_t*>(buffer);
    std::copy(bytes, bytes + arriving, disk.content.begin() + position_);
    position_ += arriving;
    return arriving;
}

std::int32_t TRCT_FileEx::Close() {
    if (!open_)
        return 1;
    open_ = false;
    test::Disk().isOpen = false;
    return test::GoesWrong('x') ? 0 : 1;
}

/// What the module asks the system for, counted and made to fail on request. The calls are taken over where
/// they leave the module: on Linux by functions of this program that stand before the C library's, on
/// Windows in the import table of the loaded DLL.
#pragma once

#include <array>
#include <cstddef>
#include <cstdint>
#include <optional>
#include <span>
#include <string_view>

namespace test {

enum class SystemCall : std::uint8_t {
    kOpen, ///< of files to read and to write
    kAsk,  ///< for the existence or the length of a file
    kSeek, ///< of a file that is written
    kRead,
    kWrite,
    kClose, ///< the handle goes all the same
    kAllocate,
};
inline constexpr std::size_t kSystemCalls = 7;
std::string_view NameOf(SystemCall call);

enum class FaultLength : std::uint8_t {
    kOnce,  ///< the call with that number
    kLasts, ///< and all of its kind behind it
};

struct Fault {
    SystemCall call;
    std::size_t number; ///< from 0, among the calls of its kind
    FaultLength length;
};

/// Counts while it lives, across all windows, and makes `fault` happen. One at a time, on one thread.
class FaultLayer {
public:
    explicit FaultLayer(std::optional<Fault> fault = std::nullopt);
    ~FaultLayer();
    FaultLayer(const FaultLayer&) = delete;
    FaultLayer& operator=(const FaultLayer&) = delete;

    /// Calls of the module are the calls while a window is open.
    class Window {
    public:
        Window();
        ~Window();
        Window(const Window&) = delete;
        Window& operator=(const Window&) = delete;
    };

    /// Calls counted so far.
    static std::size_t Count(SystemCall call);
    /// True when the fault has happened.
    static bool Happened();
};

/// For the functions that take over: counts one call; true when it must fail.
bool TakeCall(SystemCall call) noexcept;

/// Blocks of C++ memory that this program holds; nothing where it cannot tell.
std::optional<std::int64_t> LiveBlocks();

/// File descriptors or handles that this process holds.
std::size_t OpenHandles();

/// Has the calls of the module that is loaded taken over; to be called once, before any window.
void TakeOverCalls();

} // namespace test

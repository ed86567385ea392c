// The system's functions as the loaded module finds them: entries of its import table, replaced by this
// program's own.

#include "faults/fault_layer.h"

#include <cstdlib>
#include <cstring>
#include <malloc.h>
#include <map>
#include <stdexcept>
#include <string_view>
#include <vector>
#include <windows.h>

namespace {

using test::SystemCall;
using test::TakeCall;

/// True, with the reason set, when the call must fail.
bool Fails(SystemCall call, DWORD reason) {
    if (!TakeCall(call))
        return false;
    SetLastError(reason);
    return true;
}

HANDLE WINAPI Create(LPCWSTR name, DWORD access, DWORD share, LPSECURITY_ATTRIBUTES security, DWORD creation,
                     DWORD flags, HANDLE pattern) {
    return Fails(SystemCall::kOpen, ERROR_TOO_MANY_OPEN_FILES)
               ? INVALID_HANDLE_VALUE
               : CreateFileW(name, access, share, security, creation, flags, pattern);
}

BOOL WINAPI Close(HANDLE handle) {
    const BOOL closed = CloseHandle(handle);
    return Fails(SystemCall::kClose, ERROR_WRITE_FAULT) ? FALSE : closed;
}

BOOL WINAPI Read(HANDLE handle, LPVOID buffer, DWORD count, LPDWORD done, LPOVERLAPPED place) {
    return Fails(SystemCall::kRead, ERROR_READ_FAULT) ? FALSE : ReadFile(handle, buffer, count, done, place);
}

BOOL WINAPI Write(HANDLE handle, LPCVOID buffer, DWORD count, LPDWORD done, LPOVERLAPPED place) {
    return Fails(SystemCall::kWrite, ERROR_DISK_FULL) ? FALSE : WriteFile(handle, buffer, count, done, place);
}

BOOL WINAPI SetPointer(HANDLE handle, LARGE_INTEGER distance, PLARGE_INTEGER position, DWORD method) {
    return Fails(SystemCall::kSeek, ERROR_SEEK) ? FALSE
                                                : SetFilePointerEx(handle, distance, position, method);
}

BOOL WINAPI GetSize(HANDLE handle, PLARGE_INTEGER size) {
    return Fails(SystemCall::kAsk, ERROR_IO_DEVICE) ? FALSE : GetFileSizeEx(handle, size);
}

DWORD WINAPI GetAttributes(LPCWSTR name) {
    return Fails(SystemCall::kAsk, ERROR_IO_DEVICE) ? INVALID_FILE_ATTRIBUTES : GetFileAttributesW(name);
}

void* Malloc(std::size_t bytes) {
    return TakeCall(SystemCall::kAllocate) ? nullptr : std::malloc(bytes);
}

void* Calloc(std::size_t count, std::size_t bytes) {
    return TakeCall(SystemCall::kAllocate) ? nullptr : std::calloc(count, bytes);
}

void* Realloc(void* memory, std::size_t bytes) {
    return TakeCall(SystemCall::kAllocate) ? nullptr : std::realloc(memory, bytes);
}

void* AlignedMalloc(std::size_t bytes, std::size_t alignment) {
    return TakeCall(SystemCall::kAllocate) ? nullptr : _aligned_malloc(bytes, alignment);
}

template <typename Function>
void* Address(Function* function) {
    void* address = nullptr;
    static_assert(sizeof address == sizeof function);
    std::memcpy(&address, &function, sizeof address);
    return address;
}

const std::map<std::string_view, void*>& Replacements() {
    static const std::map<std::string_view, void*> replacements = {
        {"CreateFileW", Address(Create)},
        {"CloseHandle", Address(Close)},
        {"ReadFile", Address(Read)},
        {"WriteFile", Address(Write)},
        {"SetFilePointerEx", Address(SetPointer)},
        {"GetFileSizeEx", Address(GetSize)},
        {"GetFileAttributesW", Address(GetAttributes)},
        {"malloc", Address(Malloc)},
        {"calloc", Address(Calloc)},
        {"realloc", Address(Realloc)},
        {"_aligned_malloc", Address(AlignedMalloc)},
    };
    return replacements;
}

template <typename Record>
const Record* At(const unsigned char* image, std::size_t offset) {
    return reinterpret_cast<const Record*>(image + offset);
}

void Replace(const IMAGE_THUNK_DATA* entry, void* function) {
    auto* place = const_cast<ULONGLONG*>(&entry->u1.Function);
    DWORD before = 0;
    if (VirtualProtect(place, sizeof *place, PAGE_READWRITE, &before) == 0)
        throw std::runtime_error("the import table cannot be written");
    *place = reinterpret_cast<ULONGLONG>(function);
    VirtualProtect(place, sizeof *place, before, &before);
}

/// Replaces what one library's part of the import table has of the functions; gives how many.
std::size_t ReplaceIn(const unsigned char* image, const IMAGE_IMPORT_DESCRIPTOR& library) {
    std::size_t replaced = 0;
    const auto* name = At<IMAGE_THUNK_DATA>(image, library.OriginalFirstThunk);
    const auto* entry = At<IMAGE_THUNK_DATA>(image, library.FirstThunk);
    for (; name->u1.AddressOfData != 0; ++name, ++entry) {
        if (IMAGE_SNAP_BY_ORDINAL(name->u1.Ordinal))
            continue;
        const auto* import = At<IMAGE_IMPORT_BY_NAME>(image, name->u1.AddressOfData);
        const auto found = Replacements().find(reinterpret_cast<const char*>(import->Name));
        if (found == Replacements().end())
            continue;
        Replace(entry, found->second);
        ++replaced;
    }
    return replaced;
}

struct ListedHandle {
    ULONG process;
    UCHAR type;
    UCHAR flags;
    USHORT value;
    void* object;
    ULONG access;
};

/// Handles of this process in the list of all.
std::size_t ListedHandles() {
    using Query = LONG(WINAPI*)(ULONG, void*, ULONG, ULONG*);
    constexpr ULONG kHandles = 16;
    Query query = nullptr;
    const FARPROC found = GetProcAddress(GetModuleHandleW(L"ntdll.dll"), "NtQuerySystemInformation");
    std::memcpy(&query, &found, sizeof query);
    std::vector<unsigned char> list(1 << 20);
    if (query == nullptr || query(kHandles, list.data(), static_cast<ULONG>(list.size()), nullptr) != 0)
        throw std::runtime_error("the system does not list handles");
    ULONG listed = 0;
    std::memcpy(&listed, list.data(), sizeof listed);
    std::size_t count = 0;
    for (std::size_t i = 0; i < listed; ++i) {
        ListedHandle handle;
        std::memcpy(&handle, list.data() + sizeof(void*) + i * sizeof handle, sizeof handle);
        count += handle.process == GetCurrentProcessId();
    }
    return count;
}

} // namespace

namespace test {

std::optional<std::int64_t> LiveBlocks() {
    return std::nullopt;
}

std::size_t OpenHandles() {
    DWORD count = 0;
    if (GetProcessHandleCount(GetCurrentProcess(), &count) != 0 && count != 0)
        return count;
    // Wine does not count, but lists.
    return ListedHandles();
}

void TakeOverCalls() {
    static const bool done = [] {
        const auto* image = reinterpret_cast<const unsigned char*>(GetModuleHandleW(L"trnmpafileread.dll"));
        if (image == nullptr)
            throw std::runtime_error("the module is not loaded");
        const auto* dos = At<IMAGE_DOS_HEADER>(image, 0);
        const auto* header = At<IMAGE_NT_HEADERS>(image, static_cast<std::size_t>(dos->e_lfanew));
        const auto& imports = header->OptionalHeader.DataDirectory[IMAGE_DIRECTORY_ENTRY_IMPORT];
        std::size_t replaced = 0;
        for (const auto* library = At<IMAGE_IMPORT_DESCRIPTOR>(image, imports.VirtualAddress);
             library->Name != 0; ++library)
            replaced += ReplaceIn(image, *library);
        if (replaced < Replacements().size())
            throw std::runtime_error("the module has not all functions in its import table");
        return true;
    }();
    static_cast<void>(done);
}

} // namespace test

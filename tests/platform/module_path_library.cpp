// A library that tells where it believes itself to be.

#include "os/paths.h"

#include <string>

#if defined(_WIN32)

#include <windows.h>

#define TEST_EXPORT extern "C" __declspec(dllexport)

BOOL WINAPI DllMain(HINSTANCE instance, DWORD reason, void*) {
    if (reason == DLL_PROCESS_ATTACH)
        os::SetModuleInstance(instance);
    return TRUE;
}

#else

#define TEST_EXPORT extern "C" __attribute__((visibility("default")))

#endif

TEST_EXPORT const wchar_t* TestModulePath() {
    static std::wstring path;
    path = os::ModulePath();
    return path.c_str();
}

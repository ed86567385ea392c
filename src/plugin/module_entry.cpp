// The module's entry: the exported function and, on Windows, the library's start-up and shut-down.

#if defined(TRN_HAS_MFC)
// Before anything that includes windows.h.
#include <afxwin.h>

#include <afxdllx.h>
#endif

#include "plugin/boundary.h"
#include "plugin/plugin_module.h"
#include "trnmpafileread/export.h"

#include <memory>

extern "C" TRN_EXPORT PLUGIN_FILE_READER_MODULE* GetPluginReadModule() {
    std::unique_ptr<trnmpa::kwMpaPluginReaderModule> module;
    trnmpa::Guarded([&] {
        module = std::make_unique<trnmpa::kwMpaPluginReaderModule>();
        return 1;
    });
    return module.release();
}

#if defined(_WIN32)

#include "os/paths.h"
#include "plugin/boundary.h"

#if defined(TRN_HAS_MFC)

// The host is built on MFC and expects its plug-ins to be extension modules of it.
namespace {

AFX_EXTENSION_MODULE g_extensionModule = {};

BOOL StartModule(HINSTANCE instance) {
    if (AfxInitExtensionModule(g_extensionModule, instance) == 0)
        return FALSE;
    os::SetModuleInstance(instance);
    return trnmpa::Guarded(
        []() -> BOOL {
            new CDynLinkLibrary(g_extensionModule); // MFC owns it
            return TRUE;
        },
        FALSE);
}

void EndModule() {
    AfxTermExtensionModule(g_extensionModule);
}

} // namespace

#else

#include <windows.h>

namespace {

BOOL StartModule(HINSTANCE instance) {
    os::SetModuleInstance(instance);
    return TRUE;
}

void EndModule() {}

} // namespace

#endif

extern "C" BOOL WINAPI DllMain(HINSTANCE instance, DWORD reason, LPVOID) {
    if (reason == DLL_PROCESS_ATTACH)
        return StartModule(instance);
    if (reason == DLL_PROCESS_DETACH)
        EndModule();
    return TRUE;
}

#endif

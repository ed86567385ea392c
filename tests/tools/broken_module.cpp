/// Modules that break the contract in one way each, told by BROKEN_*, and keep it otherwise: they pass every
/// call on to the real module, whose path stands in the environment variable TRN_MODULE.

#include "os/paths.h"
#include "os/shared_library.h"
#include "trnmpafileread/plugin.h"

#include <cstdlib>
#include <memory>
#include <vector>

namespace {

#if defined(BROKEN_SLOT)

/// As PLUGIN_FILE_READER_MODULE, with an operation too many in front of the others.
class ShiftedInterface {
public:
    virtual ~ShiftedInterface() = default;
    virtual std::int32_t OneTooMany() = 0;
    virtual std::int32_t GetModuleInfo(PLUGIN_READER_MODULE_INFO* record) = 0;
};

class ShiftedModule : public ShiftedInterface {
public:
    std::int32_t OneTooMany() override { return 1; }
    std::int32_t GetModuleInfo(PLUGIN_READER_MODULE_INFO*) override { return 1; }
};

PLUGIN_FILE_READER_MODULE* MakeModule() {
    return reinterpret_cast<PLUGIN_FILE_READER_MODULE*>(new ShiftedModule);
}

#else

class BrokenReader : public PLUGIN_FILE_READER_CLASS {
public:
    explicit BrokenReader(PLUGIN_FILE_READER_CLASS* real) : real_(real) {}

    std::int32_t GetClassInfo(PLUGIN_READER_CLASS_INFO* record) override {
        const std::int32_t result = real_->GetClassInfo(record);
#if defined(BROKEN_READER_RECORD)
        if (record != nullptr)
            record->reserved[23] = 1;
#endif
        return result;
    }
    std::int32_t OpenFile(std::wstring path, std::uint32_t flags) override {
        return real_->OpenFile(std::move(path), flags);
    }
    std::int32_t CreateFileIndex() override {
        return real_->CreateFileIndex();
    }
    std::int32_t GetIndexProgress(std::int32_t kind, PLUGIN_INDEX_PROGRESS* record) override {
        return real_->GetIndexProgress(kind, record);
    }
    std::int32_t CancelIndexing() override {
        return real_->CancelIndexing();
    }
    std::int32_t GetFileInfo(std::int32_t kind, void* record) override {
        return real_->GetFileInfo(kind, record);
    }
    std::int32_t ClassReserved1() override {
        return real_->ClassReserved1();
    }
    std::int32_t ReadSamples(std::uint32_t stream, std::int64_t start, std::uint32_t count,
                             unsigned char** data, std::int32_t* size) override {
        const std::int32_t result = real_->ReadSamples(stream, start, count, data, size);
#if defined(BROKEN_PCM)
        // The last bit of one sample.
        if (result == 1 && start <= 7000 && start + count > 7000)
            (*data)[0] ^= 1;
#endif
        return result;
    }
    std::int32_t ClassReserved2() override {
        return real_->ClassReserved2();
    }

private:
    std::unique_ptr<PLUGIN_FILE_READER_CLASS> real_;
};

class BrokenModule : public PLUGIN_FILE_READER_MODULE {
public:
    explicit BrokenModule(PLUGIN_FILE_READER_MODULE* real) : real_(real) {}

    std::int32_t GetModuleInfo(PLUGIN_READER_MODULE_INFO* record) override {
        const std::int32_t result = real_->GetModuleInfo(record);
#if defined(BROKEN_MODULE_RECORD)
        if (record != nullptr)
            record->name[4] = 'p';
#endif
        return result;
    }
    std::int32_t GetClassIdForFile(std::wstring path, std::int32_t* identifier) override {
        return real_->GetClassIdForFile(std::move(path), identifier);
    }
    std::int32_t ModuleReserved1() override {
        return real_->ModuleReserved1();
    }
    std::int32_t CreateReaderClass(std::int32_t identifier, PLUGIN_FILE_READER_CLASS** reader) override {
        const std::int32_t result = real_->CreateReaderClass(identifier, reader);
        if (result == 1 && *reader != nullptr)
            *reader = new BrokenReader(*reader);
        return result;
    }
    std::int32_t ModuleReserved2() override {
        return real_->ModuleReserved2();
    }

private:
    std::unique_ptr<PLUGIN_FILE_READER_MODULE> real_;
};

PLUGIN_FILE_READER_MODULE* RealModule() {
    // Never unloaded: what it handed out may live longer than any object here.
    static os::SharedLibrary library;
    const char* path = std::getenv("TRN_MODULE");
    if (path == nullptr || !library.Load(os::WidenUtf8(path)))
        return nullptr;
    const auto entry = library.FunctionNamed<GetPluginReadModuleFunction>("GetPluginReadModule");
    return entry != nullptr ? entry() : nullptr;
}

PLUGIN_FILE_READER_MODULE* MakeModule() {
    return new BrokenModule(RealModule());
}

#endif

} // namespace

PLUGIN_FILE_READER_MODULE* GetPluginReadModule() {
    return MakeModule();
}

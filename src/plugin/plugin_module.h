/// The module object that the host gets.
#pragma once

#include "trnmpafileread/plugin.h"

namespace trnmpa {

class kwMpaPluginReaderModule final : public PLUGIN_FILE_READER_MODULE {
public:
    kwMpaPluginReaderModule();

    std::int32_t GetModuleInfo(PLUGIN_READER_MODULE_INFO* record) override;
    std::int32_t GetClassIdForFile(std::wstring path, std::int32_t* identifier) override;
    std::int32_t ModuleReserved1() override;
    std::int32_t CreateReaderClass(std::int32_t identifier, PLUGIN_FILE_READER_CLASS** reader) override;
    std::int32_t ModuleReserved2() override;

private:
    bool Serves(std::int32_t identifier) const;

    PLUGIN_READER_MODULE_INFO info_ = {};
};

} // namespace trnmpa

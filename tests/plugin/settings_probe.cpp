// Prints the settings that a program sees in its place, for module_settings_test.cpp.

#include "os/paths.h"
#include "plugin/module_settings.h"

#include <cstdio>

int main() {
    const int readBufferBytes = trnmpa::ReadModuleSettings();
    std::printf("folder %s\nbuffer %d\ndecoder %d\nblock %d\n",
                os::NarrowToUtf8(trnmpa::GetConfigFolder()).c_str(), readBufferBytes, trnmpa::Mp3DecoderUse(),
                trnmpa::ReadMp3BufSize());
    return 0;
}

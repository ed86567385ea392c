// Prints how much a buffered stream asks for at once, for buffer_size_test.cpp.

#include "fileio/buffered_file_stream.h"
#include "fileio/recording_stream.h"

#include <cstdio>

int main() {
    test::RecordingStream inner;
    trnmpa::CBufferedFileStream stream(&inner);
    char byte = 0;
    stream.Read(&byte, 1);
    for (const std::string& call : inner.TakeCalls())
        std::puts(call.c_str());
    return 0;
}

/// Slices over media bytes and perhaps index bytes: any duration, format and place.
#include "harness/slice_script.h"

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
    fuzz::Input input({data, size});
    const bool hasIndex = (input.U8() & 1) != 0;
    fuzz::Input script(input.Part());
    const fuzz::View index = hasIndex ? input.Part() : fuzz::View();
    const fuzz::View bytes = input.Rest();
    fuzz::Media media(bytes);
    if (hasIndex)
        media.PutIndex(index);
    fuzz::SliceScript reader(media);
    reader.Read();
    reader.Open();
    while (!script.IsEmpty())
        reader.Step(script);
    reader.Read();
    return 0;
}

/// The sample reader over media bytes and perhaps index bytes: reads, opens and closes in any order, the file
/// cut between them, with either decoder.
#include "harness/sample_script.h"
#include "harness/settings.h"

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
    fuzz::Input input({data, size});
    const std::uint8_t kind = input.U8();
    fuzz::Input script(input.Part());
    const bool hasIndex = (kind & 1) != 0;
    const fuzz::View index = hasIndex ? input.Part() : fuzz::View();
    const fuzz::View bytes = input.Rest();
    fuzz::Media media(bytes);
    if (hasIndex)
        media.PutIndex(index);
    fuzz::SelectDecoder((kind & 4) != 0 ? 1 : 0);
    fuzz::SampleScript reader(media);
    reader.Open();
    reader.Read(0, 2000);
    const bool cuts = (kind & 2) != 0;
    while (!script.IsEmpty()) {
        reader.Step(script);
        if (cuts && script.Size() == 8)
            media.Rewrite(bytes.first(bytes.size() / 2));
    }
    return 0;
}

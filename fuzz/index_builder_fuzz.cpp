/// The index builder on any bytes, held to a plain retelling of what it must write, then the readers with
/// that index.
#include "harness/sample_script.h"

#include "index/builder/index_model.h"
#include "trnmpafileread/index_creator.h"

namespace {

using fuzz::Require;

void CheckFinished(TRN_MpaFileIndexCreator& creator, const fuzz::Media& media,
                   const test::IndexModel& model) {
    PROGRESS_INFO progress = {};
    Require(creator.GetFileIdxingProgress(progress) == 1, "progress");
    Require(progress.state == TRN_INDEX_FINISHED, "the run has not finished");
    Require(progress.framesIndexed == model.framesIndexed, "frames indexed");
    Require(progress.percent == model.percent, "percent");
    Require(media.IndexOnDisk() == model.index, "another index than the model's");
}

} // namespace

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
    fuzz::Input input({data, size});
    const std::uint8_t kind = input.U8();
    const fuzz::View bytes = input.Rest();
    fuzz::Media media(bytes);
    const test::IndexModel model = test::ModelOfIndexing(fuzz::Bytes(bytes.begin(), bytes.end()));

    TRN_MpaFileIndexCreator creator;
    Require(creator.Initialize() == 1, "Initialize");
    const std::int32_t opened = fuzz::Watched("SetInputFile", media.WorkFor(), [&] {
        return creator.SetInputFile(CComBSTR(media.Path().c_str()));
    });
    Require(opened == (model.opens ? 1 : 0), "opens or not as the model does");
    if ((kind & 1) != 0)
        Require(creator.CancelIndexing() == 1, "cancelled before the run");
    const std::int32_t built =
        fuzz::Watched("CreateFileIndex", media.WorkFor(), [&] { return creator.CreateFileIndex(); });
    Require(built == 1, "CreateFileIndex");
    if (opened == 1)
        CheckFinished(creator, media, model);
    if ((kind & 2) != 0)
        Require(creator.CancelIndexing() == 1, "cancelled behind the run");

    fuzz::SampleScript reader(media);
    reader.Open();
    for (const std::int64_t start : {0, 1000, 20'000, 1'000'000})
        reader.Read(start, 1500);
    return 0;
}

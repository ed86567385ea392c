#include "trnmpafileread/index_creator.h"
#include "index/builder/file_index_writer.h"
#include "plugin/boundary.h"
#include "plugin/engine_users.h"

#include <memory>
#include <string>

TRN_MpaFileIndexCreator::TRN_MpaFileIndexCreator() = default;

TRN_MpaFileIndexCreator::TRN_MpaFileIndexCreator(const TRN_MpaFileIndexCreator& other)
    : engine_(trnmpa::ShareEngine(other.engine_)) {}

TRN_MpaFileIndexCreator& TRN_MpaFileIndexCreator::operator=(const TRN_MpaFileIndexCreator& other) {
    if (this != &other)
        trnmpa::ReplaceEngine(engine_, trnmpa::ShareEngine(other.engine_));
    return *this;
}

TRN_MpaFileIndexCreator::~TRN_MpaFileIndexCreator() {
    trnmpa::ReplaceEngine(engine_, nullptr);
}

std::int32_t TRN_MpaFileIndexCreator::Initialize() {
    return trnmpa::Guarded([this] {
        trnmpa::ReplaceEngine(engine_, nullptr);
        engine_ = std::make_unique<trnmpa::KwMpaFileIndexWriter>().release();
        return engine_->Initialize();
    });
}

std::int32_t TRN_MpaFileIndexCreator::SetInputFile(CComBSTR path) {
    return trnmpa::Guarded(
        [&] { return engine_ != nullptr ? engine_->SetInputFile(std::wstring(os::CharactersOf(path))) : 0; });
}

std::int32_t TRN_MpaFileIndexCreator::CreateFileIndex() {
    return trnmpa::Guarded([this] { return engine_ != nullptr ? engine_->CreateFileIndex() : 0; });
}

std::int32_t TRN_MpaFileIndexCreator::GetFileIdxingProgress(PROGRESS_INFO& progress) {
    return trnmpa::Guarded([&] { return engine_ != nullptr ? engine_->GetFileIdxingProgress(progress) : 0; });
}

std::int32_t TRN_MpaFileIndexCreator::CancelIndexing() {
    return trnmpa::Guarded([this] { return engine_ != nullptr ? engine_->CancelIndexing() : 0; });
}

#include "trnmpafileread/index_creator.h"
#include "index/builder/file_index_writer.h"
#include "plugin/boundary.h"
#include "plugin/engine_users.h"

#include <memory>
#include <string>

using trnmpa::Guarded;
using trnmpa::WithEngine;

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
    trnmpa::ReplaceEngine(engine_, nullptr);
    return Guarded([this] {
        auto engine = std::make_unique<trnmpa::KwMpaFileIndexWriter>();
        const std::int32_t result = engine->Initialize();
        engine_ = engine.release();
        return result;
    });
}

std::int32_t TRN_MpaFileIndexCreator::SetInputFile(CComBSTR path) {
    return WithEngine(
        engine_, [&](auto& engine) { return engine.SetInputFile(std::wstring(os::CharactersOf(path))); });
}

std::int32_t TRN_MpaFileIndexCreator::CreateFileIndex() {
    return WithEngine(engine_, [](auto& engine) { return engine.CreateFileIndex(); });
}

std::int32_t TRN_MpaFileIndexCreator::GetFileIdxingProgress(PROGRESS_INFO& progress) {
    return WithEngine(engine_, [&](auto& engine) { return engine.GetFileIdxingProgress(progress); });
}

std::int32_t TRN_MpaFileIndexCreator::CancelIndexing() {
    return WithEngine(engine_, [](auto& engine) { return engine.CancelIndexing(); });
}

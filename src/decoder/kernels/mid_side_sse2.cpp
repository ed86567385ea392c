#include "decoder/kernels/lanes_sse2.h"
#include "decoder/kernels/mid_side_lanes.h"

namespace trnmpa::sse2 {

void UndoMidSide(float* left, float* right, std::size_t count) {
    UndoMidSideInLanes<Doubles2>(left, right, count);
}

} // namespace trnmpa::sse2

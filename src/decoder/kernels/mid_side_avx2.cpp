#include "decoder/kernels/lanes_avx2.h"
#include "decoder/kernels/mid_side_lanes.h"

namespace trnmpa::avx2 {

void UndoMidSide(float* left, float* right, std::size_t count) {
    UndoMidSideInLanes<Doubles4>(left, right, count);
}

} // namespace trnmpa::avx2

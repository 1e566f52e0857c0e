// SPDX-License-Identifier: Apache-2.0
//
// The work that a sender left to the network card (frame.h's Offload), done here for cables that do
// not take it over, and for the CPU.
#ifndef SOFTCARD_FRAMES_OFFLOAD_H_
#define SOFTCARD_FRAMES_OFFLOAD_H_

#include <cstddef>

#include "softcard/frames/frame.h"

namespace softcard {

// Completes a partial checksum. A frame whose offsets lie outside of it loses the mark and is
// otherwise left alone.
void complete_checksum(Frame& frame);

// The longest piece in bytes that a frame to be segmented is cut into; its own size when it cannot
// be cut.
std::size_t longest_segment(const Frame& frame);

// Takes the next piece off `frame`, which is to be segmented: a frame of its own with all checksums
// complete. The last piece leaves `frame` null; so does a frame whose headers do not fit its
// segmentation, which is dropped with a null result, as is the rest when `pool` is used up.
//   taken   payload bytes taken so far: 0 at the first call, counted here.
FramePtr next_segment(FramePtr& frame, FramePool& pool, std::size_t& taken);

}  // namespace softcard

#endif  // SOFTCARD_FRAMES_OFFLOAD_H_

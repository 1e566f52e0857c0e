// SPDX-License-Identifier: Apache-2.0
//
// The control plane as the pipeline sees it.
#ifndef SOFTCARD_PIPELINE_CPU_QUEUE_H_
#define SOFTCARD_PIPELINE_CPU_QUEUE_H_

#include "softcard/frames/frame.h"

namespace softcard {

// Where frames for the control plane wait.
class CpuQueue {
 public:
  // Whether anybody takes packets: without, there is no need to make a copy for one.
  virtual bool wants_packets() const = 0;
  // Takes a packet whose ingress, VLAN and priority are the frame's; `reason` is RX_REASON_....
  // False when it was not queued, for want of room or of somebody who takes it.
  virtual bool post_packet(FramePtr frame, unsigned reason) = 0;

 protected:
  ~CpuQueue() = default;
};

}  // namespace softcard

#endif  // SOFTCARD_PIPELINE_CPU_QUEUE_H_

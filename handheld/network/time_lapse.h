// How fast the time-outs of select pass.
#pragma once

namespace ce::host {

// For tests of what happens after a long wait: a time-out of select passes this many times as fast
// as real time. 1 at first. For calls of select that begin from now on.
void SetTimeLapse(double factor);

}  // namespace ce::host

#pragma once

namespace ferrobank::updates {

/// Whether a program started now would find a display: a Wayland or X server of this machine that takes
/// connections, one on another machine, which is believed, or a platform without windows. Where there is
/// none, a program that ends at once says nothing about its version.
[[nodiscard]] bool displayAnswers();

} // namespace ferrobank::updates

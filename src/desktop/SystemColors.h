#pragma once

namespace corvane {

/// Brings the windows into dark colours where the desktop prefers them and the toolkit does not
/// know: asks the desktop at the start and each time the program comes to the front, without
/// waiting for the answer. Does nothing where nobody answers.
void FollowSystemColors();

} // namespace corvane

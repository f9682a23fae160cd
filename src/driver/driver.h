#pragma once

namespace tavek {

/// One run of the tool: chooses the job from the command line and does it. Returns normally on success, also when there
/// is nothing to do or only help to print. Throws an exception derived from
/// std::exception for any failure: the rotation file is then as it was, while rotated copies may already be gone, and
/// where only the rename failed the new file stays beside it.
void run(int argc, const char* const* argv);

} // namespace tavek

#pragma once

namespace tavek {

/// Performs one run of the tool: chooses the job from the command line and does it. Returns normally on success, even
/// if there is nothing to do or only help is printed. Throws an exception derived from std::exception on any failure.
/// An existing rotation file is then unchanged. The one exception is a failed directory sync. A missing rotation file
/// may have been created empty, and rotated copies may have been deleted. With --system-logs, the files of the
/// categories processed before the failure keep their new contents. If only the rename failed, the complete new file
/// remains beside the old one.
void run(int argc, const char* const* argv);

} // namespace tavek

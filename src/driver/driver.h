#pragma once

namespace tavek {

/// Performs one run of the tool: chooses the job from the command line and does it. Returns normally on success, also
/// if there is nothing to do or only help is printed. Throws an exception derived from std::exception on any failure:
/// an existing rotation file is then unchanged, but a missing one may have been created empty, rotated copies may have
/// been deleted, and --system-logs keeps the categories it has finished. If only the rename failed, the complete new
/// file remains beside the old one.
void run(int argc, const char* const* argv);

} // namespace tavek

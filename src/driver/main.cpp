#include <cstdio>
#include <cstdlib>
#include <exception>

#include "driver/driver.h"
#include "driver/process_state.h"
#include "log/log.h"
#include "rotation/scanner_fatal_error.h"

namespace {

// Standard error is unbuffered, so one call writes the message in one piece unless it is longer than stdio's buffer.
int fail(const std::exception& error, int status) {
  std::fprintf(stderr, "%s\n", error.what());
  return status;
}

} // namespace

int main(int argc, char** argv) {
  tavek::log_state().program_path = argv[0];
  tavek::open_missing_standard_streams();
  tavek::ignore_write_signals();
  try {
    tavek::run(argc, argv);
    return EXIT_SUCCESS;
  } catch (const tavek::ScannerFatalError& error) {
    return fail(error, tavek::ScannerFatalError::kExitStatus);
  } catch (const std::exception& error) {
    return fail(error, EXIT_FAILURE);
  }
}

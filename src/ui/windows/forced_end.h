#pragma once

namespace zemblar {

/// Makes the program write the recovery copy when it is ended by SIGTERM, SIGINT or SIGHUP, or by
/// the loss of the X server.
///
/// The process then ends with the status of the signal, as if there were no handler. A signal that
/// the parent process has set to be ignored stays ignored. After the loss of the X server the exit
/// status is 1. Call once, after the toolkit has started.
void keep_work_at_forced_end();

}  // namespace zemblar

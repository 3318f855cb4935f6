#pragma once

namespace zemblar {

/// From now on, unsaved work is kept when the program is ended from outside: by SIGTERM, SIGINT or
/// SIGHUP, or by the loss of the X server.
///
/// The process ends with the usual status of the signal, as if it had no handler. A signal that the
/// parent process has set to be ignored stays so. Without an X server the status is 1. Call once,
/// when the toolkit has started.
void keep_work_at_forced_end();

}  // namespace zemblar

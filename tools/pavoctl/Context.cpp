#include "Context.h"

namespace pavoctl {

StopSignal& Context::stopSignal() {
  if (!stop) {
    stop.emplace();
  }
  return *stop;
}

Session& Context::session(const Session::Options& options) {
  if (!running) {
    running.emplace(options);
  }
  return *running;
}

}  // namespace pavoctl

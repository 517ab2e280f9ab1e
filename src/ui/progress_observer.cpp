#include "ui/progress_observer.h"

namespace sb {

void progress_observer::recordsDone(long done, long good, long failed, long total) {
    (void)good;
    (void)failed;
    feedback_.setPercent(total > 0 ? static_cast<int>(done * 100 / total) : 100);
}

cancel_request progress_observer::cancelRequested() {
    return feedback_.cancelled() ? cancel_request::end_running : cancel_request::none;
}

}  // namespace sb

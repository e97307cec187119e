#include "tether/tap/drain_gauge.h"

#include <sys/ioctl.h>
#include <sys/stat.h>
#include <utility>
#if defined(__linux__)
#include <linux/sockios.h>
#endif

namespace tap {

DrainGauge::Change DrainGauge::look(std::size_t unread, host::TimePoint now) {
    const bool progress = unread < unread_ || unread == 0;
    unread_ = unread;
    const auto between = now - std::exchange(looked_, now);
    if (between > longest_between_looks) {
        since_ += between;
    }
    if (progress) {
        since_ = now;
        return std::exchange(stalled_, false) ? Change::drained : Change::none;
    }
    if (!stalled_ && now - since_ >= longest_stall) {
        stalled_ = true;
        return Change::stalled;
    }
    return Change::none;
}

void DrainGauge::written(std::size_t unread, host::TimePoint now) {
    since_ = unread_ == 0 ? now : since_;
    looked_ = now;
    unread_ = unread;
}

UnreadBytes::UnreadBytes(int descriptor) : descriptor_(descriptor) {
#if defined(__linux__)
    struct stat found {};
    if (fstat(descriptor, &found) == 0) {
        request_ = S_ISFIFO(found.st_mode) ? FIONREAD : S_ISSOCK(found.st_mode) ? SIOCOUTQ : 0UL;
    }
#endif
}

std::size_t UnreadBytes::count() const {
    int bytes = 0;
    if (request_ == 0 || ioctl(descriptor_, request_, &bytes) != 0 || bytes < 0) {
        return 0;
    }
    return static_cast<std::size_t>(bytes);
}

}  // namespace tap

#include "program/transport_adapter.h"

#include <optional>
#include <string>
#include <sys/stat.h>

#include "program/executable_path.h"
#include "protocol/emit.h"

void report_transport_adapter() {
    const std::optional<std::string> executable = executable_path();
    if (!executable) {
        return;
    }
    const std::string adapters =
        executable->substr(0, executable->rfind('/')) + "/../Frameworks/CrAdapter";
    struct stat adapter {};
    if (stat((adapters + "/libCr_PTP_USB.dylib").c_str(), &adapter) != 0) {
        emit_log("USB transport adapters are MISSING from " + adapters +
                 " — the SDK will not see any camera (0x8703)");
    } else {
        emit_log("USB transport adapters found: " + adapters);
    }
}

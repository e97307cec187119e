// What the page finds at which address.
#pragma once

#include "host/values/time.h"
#include "tether/console/events.h"
#include "tether/console/http/access.h"
#include "tether/console/http/site.h"
#include "tether/console/kept_record.h"
#include "tether/console/previews.h"
#include "tether/console/session.h"

namespace console {

// All must outlive the site.
struct Behind {
    const Access& access;
    Session& session;
    Events& events;
    Previews& previews;
    const KeptRecord& record;
    host::Time begun;  // when the lines' clock began
};

void lay_out(Site& site, const Behind& behind);

}  // namespace console

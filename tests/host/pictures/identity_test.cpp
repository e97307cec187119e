// Which file it is.
#include "host/pictures/disk/identity.h"

#include <gtest/gtest.h>
#include <limits>

namespace {

// Where device numbers have a sign, as on a Mac, the highest ones look negative.
TEST(Identity, HasADevicesNumberWithoutASign) {
    struct stat facts {};
    facts.st_dev = static_cast<dev_t>(-1);
    EXPECT_EQ(host::pictures::identity_of(facts).device,
              std::numeric_limits<std::make_unsigned_t<dev_t>>::max());
}

}  // namespace

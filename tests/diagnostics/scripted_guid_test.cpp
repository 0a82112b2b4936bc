// A GUID generator whose system has none to give.
#include "scripted_system.h"

#include <morvantis/core/xylguid_generator.h>

#include <gtest/gtest.h>

namespace {

TEST(Scripted_guid_generator, FailureOfTheSystemIsNotNoticed) {
	scripted_system = {};
	xylGuid_generator generator;
	EXPECT_STREQ(generator.get_guid(&generator).char_p(), "{03020100-0504-0706-0809-0A0B0C0D0E0F}");
	scripted_system.succeeds = false;
	EXPECT_STREQ(generator.get_guid(&generator).char_p(), "{00000000-0000-0000-0000-000000000000}");
	EXPECT_TRUE(scripted_system.reports.empty());
}

} // namespace

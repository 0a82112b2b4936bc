// Here the engine needs no reader of its own, and the stack's hash is known.

#include <morvantis/diagnostics/zubcallstack.h>
#include <morvantis/diagnostics/zubdebughelp_interface.h>

#include <gtest/gtest.h>

TEST(zubDebughelp_interface, EngineIsAlwaysThere) {
	zubDebughelp_interface engine;
	for (int i = 0; i < 2; ++i) {
		EXPECT_TRUE(engine.initialize());
		EXPECT_TRUE(engine.initialize());
		EXPECT_TRUE(engine.is_initialized);
		EXPECT_EQ(engine.dia_module, nullptr);
		EXPECT_EQ(engine.dll_get_class_object, nullptr);
		engine.cleanup();
		EXPECT_FALSE(engine.is_initialized);
	}
}

TEST(zubCallstack, HashOfCountersIsFnvOverTheirBytes) {
	unsigned long long addresses[32], hash = 0;
	ASSERT_TRUE(zubCallstack::capture_counters(addresses, &hash, 32, 0));
	unsigned long long expected = 14695981039346656037u;
	for (const unsigned long long* address = addresses; *address != 0; ++address) {
		for (int byte = 0; byte < 8; ++byte) {
			expected ^= (*address >> (8 * byte)) & 0xFF;
			expected *= 1099511628211u;
		}
	}
	EXPECT_EQ(hash, expected);
}

// Here the engine needs a reader that this program has no access to.

#include <morvantis/diagnostics/zubdebughelp_interface.h>

#include <gtest/gtest.h>

TEST(zubDebughelp_interface, EngineDoesNotStartWithoutItsReader) {
	zubDebughelp_interface engine;
	for (int i = 0; i < 2; ++i) {
		EXPECT_FALSE(engine.initialize());
		EXPECT_FALSE(engine.is_initialized);
		EXPECT_EQ(engine.dia_module, nullptr);
		EXPECT_EQ(engine.dll_get_class_object, nullptr);
	}
	engine.cleanup();
	EXPECT_FALSE(engine.is_initialized);
}

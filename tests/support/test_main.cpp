// Entry of every test program: brings the library up under the recording host.

#include "recording_host.h"

#include <morvantis/core/zublibrary.h>

#include <gtest/gtest.h>

namespace {

// A call to the host is part of the behaviour: a test that expects one takes it.
class Unexpected_calls_fail : public testing::EmptyTestEventListener {
	void OnTestStart(const testing::TestInfo&) override { Recording_host::get().reset(); }
	void OnTestEnd(const testing::TestInfo&) override {
		for (const Host_call& call : Recording_host::get().take()) {
			ADD_FAILURE() << "unexpected call of the host: " << testing::PrintToString(call);
		}
	}
};

} // namespace

int main(int argc, char** argv) {
	testing::InitGoogleTest(&argc, argv);
	Recording_host& host = Recording_host::get();
	zubLibrary::initialize(&host, host.make_message_interface());
	auto& listeners = testing::UnitTest::GetInstance()->listeners();
	// Before the printer of results, so that its failures are counted and shown.
	testing::TestEventListener* printer = listeners.Release(listeners.default_result_printer());
	listeners.Append(new Unexpected_calls_fail);
	listeners.Append(printer);
	return RUN_ALL_TESTS();
}

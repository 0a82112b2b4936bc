// The system's record of a thread's registers, for tests that hand one to a walk.
#pragma once

#include <morvantis/core/xyltypes.h>

#include <memory>

class Processor_context {
public:
	// All registers 0, but for these two.
	Processor_context(xylUInt64 pc, const void* sp);
	Processor_context(Processor_context&&) noexcept;
	~Processor_context();

	// As the processor would have it at this place, good for as long as the calling function runs.
	template <typename Use> static void with_current(Use use) {
		Processor_context context(0, nullptr);
		context.fill_and_use(
			[](Processor_context& filled, void* data) { (*static_cast<Use*>(data))(filled); },
			&use);
	}

	void* record(); // what zubRaw_callstack::capture() takes
	xylUInt64 pc() const;
	xylUInt64 sp() const;

private:
	void fill_and_use(void (*use)(Processor_context&, void*), void* data);

	struct Record;
	std::unique_ptr<Record> record_;
};

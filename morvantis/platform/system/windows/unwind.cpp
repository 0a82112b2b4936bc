#include <morvantis/platform/system/unwind.h>

#include <morvantis/platform/system/windows/include_windows.h>

#include <cstring>

namespace {

// Moves the context to its caller, and tells the base of the image that it was in.
DWORD64 leave_frame(CONTEXT& context) {
	DWORD64 image_base = 0;
	const PRUNTIME_FUNCTION entry = RtlLookupFunctionEntry(context.Rip, &image_base, nullptr);
	if (!entry) {
		std::memcpy(&context.Rip, reinterpret_cast<const void*>(context.Rsp), sizeof(context.Rip));
		context.Rsp += 8;
		return image_base;
	}
	void* handler_data = nullptr;
	DWORD64 establisher_frame = 0;
	RtlVirtualUnwind(UNW_FLAG_NHANDLER, image_base, context.Rip, entry, &context, &handler_data,
	                 &establisher_frame, nullptr);
	return image_base;
}

unsigned int walk(CONTEXT& context, os::Unwind_step* steps, unsigned int room) {
	unsigned int count = 0;
	for (; count < room && context.Rip != 0; ++count) {
		const DWORD64 pc = context.Rip;
		steps[count] = {leave_frame(context), pc};
	}
	return count;
}

} // namespace

// What is captured is the position in this function; the caller is one frame further.
[[gnu::noinline]] unsigned int os::walk_callers(Unwind_step* steps, unsigned int room) {
	CONTEXT context;
	RtlCaptureContext(&context);
	leave_frame(context);
	return walk(context, steps, room);
}

unsigned int os::walk_context(void* context, Unwind_step* steps, unsigned int room) {
	return walk(*static_cast<CONTEXT*>(context), steps, room);
}

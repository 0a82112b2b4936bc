#include "../processor_context.h"

#include <windows.h>

struct Processor_context::Record {
	CONTEXT context{};
};

Processor_context::Processor_context(xylUInt64 pc, const void* sp) : record_(new Record) {
	record_->context.Rip = pc;
	record_->context.Rsp = reinterpret_cast<DWORD64>(sp);
}

Processor_context::Processor_context(Processor_context&&) noexcept = default;
Processor_context::~Processor_context() = default;

void* Processor_context::record() { return &record_->context; }
xylUInt64 Processor_context::pc() const { return record_->context.Rip; }
xylUInt64 Processor_context::sp() const { return record_->context.Rsp; }

void Processor_context::fill_and_use(void (*use)(Processor_context&, void*), void* data) {
	RtlCaptureContext(&record_->context);
	use(*this, data);
}

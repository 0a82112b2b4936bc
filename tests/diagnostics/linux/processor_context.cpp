#include "../processor_context.h"

#include <ucontext.h>

struct Processor_context::Record {
	ucontext_t context{};

	greg_t& operator[](int number) { return context.uc_mcontext.gregs[number]; }
};

Processor_context::Processor_context(xylUInt64 pc, const void* sp) : record_(new Record) {
	(*record_)[REG_RIP] = static_cast<greg_t>(pc);
	(*record_)[REG_RSP] = reinterpret_cast<greg_t>(sp);
}

Processor_context::Processor_context(Processor_context&&) noexcept = default;
Processor_context::~Processor_context() = default;

void* Processor_context::record() { return &record_->context; }
xylUInt64 Processor_context::pc() const { return static_cast<xylUInt64>((*record_)[REG_RIP]); }
xylUInt64 Processor_context::sp() const { return static_cast<xylUInt64>((*record_)[REG_RSP]); }

void Processor_context::fill_and_use(void (*use)(Processor_context&, void*), void* data) {
	getcontext(&record_->context);
	use(*this, data);
}

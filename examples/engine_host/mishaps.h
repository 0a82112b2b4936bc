// What goes wrong on purpose: a warning from deep within, with the stack that led there, and a
// crash.
#pragma once

#include "../shared/host.h"
#include "agents.h"
#include "options.h"

#include <morvantis/strings/xylvarstring.h>

// A host that looks up where a warning came from.
class Tracing_host : public Host {
public:
	void warning(const char* text, int reserved) override;
	// The last warning's stack, innermost first.
	void print_stack() const;

private:
	xylVarString stack_;
};

// Looks each agent over, and warns of the weakest from a few calls further down.
void inspect(const World& world);

// In a process of its own: installs a handler that leaves a dump in the out folder, and faults.
// Does not return.
[[noreturn]] void crash(const Run_options& options);
// Starts that process, waits for its end, and tells what is in the dump. False when there is none.
bool let_child_crash(const Run_options& options);

// The receiving host: reads what arrives, tests every field, and compares it with its own world.
#pragma once

#include "road.h"
#include "snapshot.h"

// Listens until the client says goodbye, prints the tables, and returns the process's exit code.
// `world` was made from the client's seed and has not been stepped.
int run_server(const Options& options, Sent_world& world);

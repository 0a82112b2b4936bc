// The growing string beside std::string: appends, search, comparison, hashing, copies.

#include <morvantis/strings/xylconststring.h>
#include <morvantis/strings/xylvarstring.h>

#include <benchmark/benchmark.h>

#include <functional>
#include <random>
#include <string>

namespace {

constexpr char sixteen_bytes[] = "0123456789abcdef";

void push(xylVarString& text, char c) { text.append(c); }
void push(std::string& text, char c) { text.push_back(c); }

// One byte at a time from empty: the growth policy at small sizes, the test for room at large ones.
template <typename Text> void append_bytes(benchmark::State& state) {
	const auto count = state.range(0);
	for (auto _ : state) {
		Text text;
		for (auto i = count; i != 0; --i) push(text, 'x');
		benchmark::DoNotOptimize(text);
	}
	state.SetItemsProcessed(state.iterations() * count);
}
BENCHMARK(append_bytes<xylVarString>)
	->Name("append_byte/ours")
	->Arg(16)
	->Arg(256)
	->Arg(4096)
	->Arg(65536);
BENCHMARK(append_bytes<std::string>)
	->Name("append_byte/std")
	->Arg(16)
	->Arg(256)
	->Arg(4096)
	->Arg(65536);

// Sixteen bytes at a time from empty, whose length neither side knows beforehand.
template <typename Text> void append_texts(benchmark::State& state) {
	const auto count = state.range(0);
	const char* source = sixteen_bytes;
	for (auto _ : state) {
		Text text;
		for (auto i = count; i != 0; --i) {
			benchmark::DoNotOptimize(source);
			text.append(source);
		}
		benchmark::DoNotOptimize(text);
	}
	state.SetItemsProcessed(state.iterations() * count);
}
BENCHMARK(append_texts<xylVarString>)->Name("append_16/ours")->Arg(4)->Arg(64)->Arg(1024);
BENCHMARK(append_texts<std::string>)->Name("append_16/std")->Arg(4)->Arg(64)->Arg(1024);

// Words of letters with a text of eight bytes at the very end, of which the first letters occur
// all over: every position is looked at.
std::string haystack(benchmark::State& state) {
	std::mt19937 random(1);
	std::string text(static_cast<size_t>(state.range(0)) - 8, ' ');
	for (char& c : text) c = "etaoin shrdlu"[random() % 13];
	return text + "the road";
}

void search_ours(benchmark::State& state) {
	const xylVarString text(haystack(state));
	const xylVarString needle("the road");
	for (auto _ : state) {
		benchmark::DoNotOptimize(text.char_p());
		benchmark::DoNotOptimize(text.search_string(needle, 0));
	}
}
void search_std(benchmark::State& state) {
	const std::string text = haystack(state);
	const std::string needle = "the road";
	for (auto _ : state) {
		benchmark::DoNotOptimize(text.data());
		benchmark::DoNotOptimize(text.find(needle, 0));
	}
}
BENCHMARK(search_ours)->Name("search_8/ours")->Arg(16)->Arg(64)->Arg(512)->Arg(4096);
BENCHMARK(search_std)->Name("search_8/std")->Arg(16)->Arg(64)->Arg(512)->Arg(4096);

// Two equal texts: the whole length is walked.
template <typename Text> void compare_equal(benchmark::State& state) {
	const std::string plain(static_cast<size_t>(state.range(0)), 'x');
	Text a(plain), b(plain);
	for (auto _ : state) {
		benchmark::DoNotOptimize(a);
		benchmark::DoNotOptimize(b);
		benchmark::DoNotOptimize(a == b);
	}
}
BENCHMARK(compare_equal<xylVarString>)->Name("equal/ours")->Arg(8)->Arg(64)->Arg(4096);
BENCHMARK(compare_equal<std::string>)->Name("equal/std")->Arg(8)->Arg(64)->Arg(4096);

template <typename Text> void compare_less(benchmark::State& state) {
	const std::string plain(static_cast<size_t>(state.range(0)), 'x');
	Text a(plain + "a"), b(plain + "b");
	for (auto _ : state) {
		benchmark::DoNotOptimize(a);
		benchmark::DoNotOptimize(b);
		benchmark::DoNotOptimize(a < b);
	}
}
BENCHMARK(compare_less<xylVarString>)->Name("less/ours")->Arg(8)->Arg(64)->Arg(4096);
BENCHMARK(compare_less<std::string>)->Name("less/std")->Arg(8)->Arg(64)->Arg(4096);

// FNV-1a is one multiplication behind the other, a byte each; what a user would pick takes eight
// bytes at a time.
template <typename Text, typename Hash> void hash_text(benchmark::State& state) {
	Text text(std::string(static_cast<size_t>(state.range(0)), 'x'));
	for (auto _ : state) {
		benchmark::DoNotOptimize(text);
		benchmark::DoNotOptimize(Hash()(text));
	}
}
BENCHMARK(hash_text<xylVarString, xylVarStringHashFunction>)
	->Name("hash/ours")
	->Arg(8)
	->Arg(64)
	->Arg(4096);
BENCHMARK(hash_text<std::string, std::hash<std::string>>)
	->Name("hash/std")
	->Arg(8)
	->Arg(64)
	->Arg(4096);

// Up to 15 characters std::string needs no heap; we always do.
template <typename Text> void copy_text(benchmark::State& state) {
	const Text text(std::string(static_cast<size_t>(state.range(0)), 'x'));
	for (auto _ : state) {
		Text copy(text);
		benchmark::DoNotOptimize(copy);
	}
}
BENCHMARK(copy_text<xylVarString>)->Name("copy/ours")->Arg(8)->Arg(64)->Arg(4096);
BENCHMARK(copy_text<std::string>)->Name("copy/std")->Arg(8)->Arg(64)->Arg(4096);

// A short name into storage that is there already.
template <typename Text> void assign_name(benchmark::State& state) {
	Text text;
	const char* source = "agent_042";
	for (auto _ : state) {
		benchmark::DoNotOptimize(source);
		text = source;
		benchmark::DoNotOptimize(text);
	}
}
BENCHMARK(assign_name<xylConstString<64>>)->Name("assign_name/fixed/ours");
BENCHMARK(assign_name<std::string>)->Name("assign_name/fixed/std");
BENCHMARK(assign_name<xylVarString>)->Name("assign_name/growing/ours");
BENCHMARK(assign_name<std::string>)->Name("assign_name/growing/std");

} // namespace

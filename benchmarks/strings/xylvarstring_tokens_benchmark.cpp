// Tokens, filters and transforms beside straightforward loops over std::string.

#include <morvantis/strings/xylvarstring.h>

#include <benchmark/benchmark.h>

#include <cctype>
#include <random>
#include <string>

namespace {

// A text resource: words of 1 to 12 letters, every eighth in quotes, ten to a line. A processor
// learns the lengths of 2,000 words by heart from one round to the next, those of 200,000 it must
// guess.
std::string resource_text(const benchmark::State& state) {
	std::mt19937 random(3);
	std::string text;
	for (int word = 0; word < state.range(0); ++word) {
		const bool quoted = word % 8 == 0;
		if (quoted) text += "\"quoted ";
		for (auto letters = 1 + random() % 12; letters != 0; --letters) {
			text += static_cast<char>('a' + random() % 26);
		}
		text += quoted ? "\"" : "";
		text += word % 10 == 9 ? '\n' : ' ';
	}
	return text;
}

void tokens_ours(benchmark::State& state) {
	xylVarString text(resource_text(state));
	char token[8192];
	int size = 0;
	for (auto _ : state) {
		text.reset_cursor(0);
		for (text.next_token(token, size); size != 0; text.next_token(token, size)) {
			benchmark::DoNotOptimize(token);
		}
	}
	state.SetBytesProcessed(state.iterations() * text.length());
}

void token_strings_ours(benchmark::State& state) {
	xylVarString text(resource_text(state));
	xylVarString token;
	for (auto _ : state) {
		text.reset_cursor(0);
		for (text.next_token_str(token); !token.is_empty(); text.next_token_str(token)) {
			benchmark::DoNotOptimize(token);
		}
	}
}

// The same steps on a std::string, a byte at a time into a reused one.
bool next_token(const std::string& text, size_t& cursor, std::string& token) {
	token.clear();
	while (cursor < text.size() && static_cast<unsigned char>(text[cursor]) < 33) ++cursor;
	if (cursor >= text.size()) return false;
	if (text[cursor] == '"') {
		for (++cursor; cursor < text.size() && text[cursor] != '"'; ++cursor) token += text[cursor];
		++cursor;
		return true;
	}
	for (; cursor < text.size() && static_cast<unsigned char>(text[cursor]) >= 33; ++cursor) {
		token += text[cursor];
	}
	return true;
}

void tokens_std(benchmark::State& state) {
	const std::string text = resource_text(state);
	std::string token;
	for (auto _ : state) {
		size_t cursor = 0;
		while (next_token(text, cursor, token)) benchmark::DoNotOptimize(token);
	}
}
BENCHMARK(tokens_ours)->Name("next_token/ours")->Arg(2000)->Arg(200000);
BENCHMARK(tokens_std)->Name("next_token/std_loop")->Arg(2000)->Arg(200000);
BENCHMARK(token_strings_ours)->Name("next_token_str/ours")->Arg(2000)->Arg(200000);
BENCHMARK(tokens_std)->Name("next_token_str/std_loop")->Arg(2000)->Arg(200000);

constexpr char list_line[] = "engine/agents/patrol_route_north (spawn, guard) 042";
constexpr char list_filter[] = "patrol -south .engine guard";

void filter_ours(benchmark::State& state) {
	const xylVarString text(list_line);
	const xylVarString filter(list_filter);
	for (auto _ : state) {
		benchmark::DoNotOptimize(text.char_p());
		benchmark::DoNotOptimize(xylVarString::matches_filter(text, filter));
	}
}

bool matches_filter(const std::string& text, const std::string& filter) {
	bool matches = true;
	for (size_t start = 0; start <= filter.size();) {
		const size_t end = std::min(filter.find(' ', start), filter.size());
		std::string word;
		for (size_t i = start; i < end; ++i) {
			if (static_cast<signed char>(filter[i]) > 32) word += filter[i];
		}
		if (word.size() < 2) {
			matches &= text.find(word) != std::string::npos;
		} else if (word.front() == '-') {
			matches &= text.find(word.substr(1)) == std::string::npos;
		} else if (word.front() == '.') {
			matches &= text.starts_with(word.substr(1));
		} else if (word.back() == '.') {
			matches &= text.ends_with(word.substr(0, word.size() - 1));
		} else {
			matches &= text.find(word) != std::string::npos;
		}
		start = end + 1;
	}
	return matches;
}

void filter_std(benchmark::State& state) {
	const std::string text = list_line;
	const std::string filter = list_filter;
	for (auto _ : state) {
		benchmark::DoNotOptimize(text.data());
		benchmark::DoNotOptimize(matches_filter(text, filter));
	}
}
BENCHMARK(filter_ours)->Name("matches_filter/ours");
BENCHMARK(filter_std)->Name("matches_filter/std_loop");

// A tagged text of a few hundred bytes.
std::string tagged_text() {
	std::string text;
	for (int i = 0; i < 16; ++i) text += "some words <b>bold</b> and more  of them, ";
	return text;
}

void tags_ours(benchmark::State& state) {
	const xylVarString text(tagged_text());
	for (auto _ : state) benchmark::DoNotOptimize(text.remove_capped_parts());
}
void tags_std(benchmark::State& state) {
	const std::string text = tagged_text();
	for (auto _ : state) {
		std::string result;
		for (size_t i = 0; i < text.size(); ++i) {
			if (text[i] == '<') {
				const size_t close = text.find('>', i);
				if (close != std::string::npos) {
					i = close;
					continue;
				}
			}
			result += text[i];
		}
		benchmark::DoNotOptimize(result);
	}
}
BENCHMARK(tags_ours)->Name("remove_capped_parts/ours");
BENCHMARK(tags_std)->Name("remove_capped_parts/std_loop");

void replace_ours(benchmark::State& state) {
	const xylVarString text(tagged_text());
	for (auto _ : state) benchmark::DoNotOptimize(text.replace(' ', "&nbsp;"));
}
void replace_std(benchmark::State& state) {
	const std::string text = tagged_text();
	for (auto _ : state) {
		std::string result;
		for (const char c : text) {
			if (c == ' ') {
				result += "&nbsp;";
			} else {
				result += c;
			}
		}
		benchmark::DoNotOptimize(result);
	}
}
BENCHMARK(replace_ours)->Name("replace_char/ours");
BENCHMARK(replace_std)->Name("replace_char/std_loop");

void spaces_ours(benchmark::State& state) {
	const xylVarString text(tagged_text());
	for (auto _ : state) {
		xylVarString copy(text);
		copy.remove_white_spaces();
		benchmark::DoNotOptimize(copy);
	}
}
void spaces_std(benchmark::State& state) {
	const std::string text = tagged_text();
	for (auto _ : state) {
		std::string copy(text);
		std::erase_if(copy, [](char c) { return static_cast<signed char>(c) <= 32; });
		benchmark::DoNotOptimize(copy);
	}
}
BENCHMARK(spaces_ours)->Name("remove_white_spaces/ours");
BENCHMARK(spaces_std)->Name("remove_white_spaces/std_loop");

void lower_ours(benchmark::State& state) {
	xylVarString text(tagged_text());
	for (auto _ : state) {
		text.convert_to_lowercase();
		benchmark::DoNotOptimize(text.char_p());
	}
}
void lower_std(benchmark::State& state) {
	std::string text = tagged_text();
	for (auto _ : state) {
		for (char& c : text) c = static_cast<char>(std::tolower(static_cast<unsigned char>(c)));
		benchmark::DoNotOptimize(text.data());
	}
}
BENCHMARK(lower_ours)->Name("convert_to_lowercase/ours");
BENCHMARK(lower_std)->Name("convert_to_lowercase/std_loop");

} // namespace

// A unit as programs have them, to be read by the symbol benchmarks: some thousand functions, most
// of them templates of the standard library. It is never run. make_large_library.sh puts other
// names in the place of unit_00.
#include <algorithm>
#include <filesystem>
#include <functional>
#include <map>
#include <regex>
#include <set>
#include <sstream>
#include <string>
#include <unordered_map>
#include <vector>

namespace unit_00 {

struct Value {
	std::string name;
	double weight;
	bool operator<(const Value& other) const { return weight < other.weight; }
	bool operator==(const Value&) const = default;
};

template <int N> [[gnu::noinline]] double work(const std::string& text) {
	const Value first{text, N};
	std::map<std::string, std::vector<Value>> by_name;
	by_name[text].push_back(first);
	std::unordered_map<std::string, std::set<Value>> sets;
	sets[text].insert(first);
	std::vector<Value> all(by_name[text]);
	std::sort(all.begin(), all.end());
	const std::function<double(const Value&)> weigh = [&](const Value& value) {
		return value.weight + static_cast<double>(value.name.size() + N);
	};
	double sum = 0;
	for (const Value& value : all) sum += weigh(value);
	return sum;
}

double run(const std::string& text) {
	std::smatch match;
	const std::regex pattern("([a-z]+)=([0-9]+)");
	double sum = std::regex_search(text, match, pattern) ? 1 : 0;
	sum += work<1>(text) + work<2>(text) + work<3>(text) + work<4>(text) + work<5>(text);
	sum += work<6>(text) + work<7>(text) + work<8>(text) + work<9>(text) + work<10>(text);
	std::ostringstream out;
	out << std::filesystem::path(text) << sum;
	return sum + static_cast<double>(out.str().size());
}

} // namespace unit_00

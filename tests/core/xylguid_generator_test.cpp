#include "recording_host.h"

#include <morvantis/core/xylguid_generator.h>
#include <morvantis/strings/xylvarstring.h>

#include <gtest/gtest.h>

#include <cctype>
#include <cstdio>
#include <cstring>
#include <random>
#include <set>
#include <stdexcept>
#include <string>
#include <type_traits>
#include <vector>

namespace {

constexpr xylGuid_type sample{
	0x01A2B3C4, 0x05D6, 0xE7F8, {0x09, 0xAA, 0xBB, 0x0C, 0xDD, 0xEE, 0xFF, 0x10}};

std::string text_of(const xylGuid_type& guid, bool braces, bool dashes) {
	xylConstString<64> text("before");
	xylGuid_generator::guid_to_string(guid, text, braces, dashes);
	EXPECT_EQ(text.length(), 32 + 2 * braces + 4 * dashes);
	return text.char_p();
}

xylGuid_type random_guid(std::mt19937& random) {
	xylUInt32 words[4];
	for (xylUInt32& word : words) word = static_cast<xylUInt32>(random());
	xylGuid_type guid;
	std::memcpy(&guid, words, sizeof(guid));
	return guid;
}

// The C library's formatter with the formats that define the four forms.
std::string formatted(const xylGuid_type& g, bool braces, bool dashes) {
	const char* dash = dashes ? "-" : "";
	char text[64];
	std::snprintf(text, sizeof(text), "%s%08X%s%04X%s%04X%s%02X%02X%s%02X%02X%02X%02X%02X%02X%s",
	              braces ? "{" : "", g.data1, dash, g.data2, dash, g.data3, dash, g.data4[0],
	              g.data4[1], dash, g.data4[2], g.data4[3], g.data4[4], g.data4[5], g.data4[6],
	              g.data4[7], braces ? "}" : "");
	return text;
}

std::string refusal_of(const char* text) {
	try {
		xylGuid_generator::string_to_guid(text);
	} catch (const std::domain_error& error) {
		return error.what();
	}
	return "none";
}

// --- Text
// -----------------------------------------------------------------------------------------

TEST(xylGuid_type, ComparesAllItsParts) {
	xylGuid_type other = sample;
	EXPECT_TRUE(other == sample);
	other.data4[7] ^= 1;
	EXPECT_TRUE(other != sample);
	static_assert(sizeof(xylGuid_type) == 16);
}

TEST(xylGuid_generator, FourFormsWithUpperCaseDigits) {
	EXPECT_EQ(text_of(sample, true, true), "{01A2B3C4-05D6-E7F8-09AA-BB0CDDEEFF10}");
	EXPECT_EQ(text_of(sample, true, false), "{01A2B3C405D6E7F809AABB0CDDEEFF10}");
	EXPECT_EQ(text_of(sample, false, true), "01A2B3C4-05D6-E7F8-09AA-BB0CDDEEFF10");
	EXPECT_EQ(text_of(sample, false, false), "01A2B3C405D6E7F809AABB0CDDEEFF10");
	EXPECT_EQ(text_of({}, true, true), "{00000000-0000-0000-0000-000000000000}");
}

TEST(xylGuid_generator, FormsAgreeWithTheFormatterAndReadBack) {
	std::mt19937 random(93);
	for (int round = 0; round < 2000; ++round) {
		const xylGuid_type guid = random_guid(random);
		for (const bool braces : {false, true}) {
			for (const bool dashes : {false, true}) {
				std::string text = text_of(guid, braces, dashes);
				ASSERT_EQ(text, formatted(guid, braces, dashes));
				ASSERT_EQ(xylGuid_generator::string_to_guid(text.c_str()), guid) << text;
				for (char& c : text) c = static_cast<char>(std::tolower(c));
				ASSERT_EQ(xylGuid_generator::string_to_guid(text.c_str()), guid) << text;
			}
		}
	}
}

TEST(xylGuid_generator, TextGoesThroughTheTargetsOwnSet) {
	xylVarString variable("before");
	xylGuid_generator::guid_to_string(sample, variable, true, true);
	EXPECT_EQ(std::string(variable.char_p()), "{01A2B3C4-05D6-E7F8-09AA-BB0CDDEEFF10}");
	xylConstString<16> too_small("before");
	xylGuid_generator::guid_to_string(sample, too_small, false, false);
	EXPECT_TRUE(too_small.is_empty()) << "a fixed string refuses silently in set()";
}

TEST(xylGuid_generator, DashesAndBracesMayBeMissingOneByOne) {
	const char* texts[] = {
		"{01A2B3C4-05D6-E7F8-09AA-BB0CDDEEFF10}", "{01A2B3C4-05D6-E7F8-09AA-BB0CDDEEFF10",
		"01A2B3C4-05D6-E7F8-09AA-BB0CDDEEFF10}",  "01A2B3C405D6-E7F8-09AA-BB0CDDEEFF10",
		"01A2B3C4-05D6E7F8-09AA-BB0CDDEEFF10",    "01A2B3C4-05D6-E7F809AA-BB0CDDEEFF10",
		"01A2B3C4-05D6-E7F8-09AABB0CDDEEFF10",    "01A2B3C405D6E7F809AABB0CDDEEFF10zzz",
		"01a2B3c405d6E7f809aAbB0cDdEeFf10",
	};
	for (const char* text : texts) {
		SCOPED_TRACE(text);
		EXPECT_EQ(xylGuid_generator::string_to_guid(text), sample);
	}
}

TEST(xylGuid_generator, MissingDigitsAreRefusedWithTheirText) {
	const char* texts[] = {
		// Too short, or nothing at all.
		"",
		"{",
		"{}",
		"01A2B3C4",
		"01A2B3C405D6E7F809AABB0CDDEEFF1",
		"{01A2B3C4-05D6-E7F8-09AA-BB0CDDEEFF1}",
		// Something else where a digit should stand.
		"{{01A2B3C4-05D6-E7F8-09AA-BB0CDDEEFF10}",
		" 01A2B3C4-05D6-E7F8-09AA-BB0CDDEEFF10",
		"01A2B3C4--05D6-E7F8-09AA-BB0CDDEEFF10",
		"01A2B3-C405D6E7F809AABB0CDDEEFF10",
		"01A2B3C4-05D6-E7F8-09AA-BB-0CDDEEFF10",
		"0xA2B3C405D6E7F809AABB0CDDEEFF10",
		"G1A2B3C405D6E7F809AABB0CDDEEFF10",
		"01A2B3C405D6E7F809AABB0CDDEEFF1g",
		"01A2B3C4 05D6E7F809AABB0CDDEEFF10",
		"*INVALID-GUID*",
	};
	for (const char* text : texts) {
		SCOPED_TRACE(text);
		EXPECT_EQ(refusal_of(text), "Invalid character in GUID");
	}
}

TEST(xylGuid_generator, EveryOtherByteIsNoDigit) {
	for (int byte = 0; byte < 256; ++byte) {
		std::string text(32, '0');
		text[31] = static_cast<char>(byte);
		const bool is_digit = (byte >= '0' && byte <= '9') || (byte >= 'a' && byte <= 'f') ||
		                      (byte >= 'A' && byte <= 'F');
		EXPECT_EQ(refusal_of(text.c_str()), is_digit ? "none" : "Invalid character in GUID")
			<< byte;
	}
}

// --- Validation
// -----------------------------------------------------------------------------------

bool is_valid(const std::string& text) {
	return xylGuid_generator().is_valid_guid(xylVarString(text.c_str()));
}

TEST(xylGuid_generator, ValidTextsHaveBracesAndDashes) {
	EXPECT_TRUE(is_valid("{01A2B3C4-05D6-E7F8-09AA-BB0CDDEEFF10}"));
	EXPECT_TRUE(is_valid("{01a2b3c4-05d6-e7f8-09aa-bb0cddeeff10}"));
	EXPECT_FALSE(is_valid("01A2B3C4-05D6-E7F8-09AA-BB0CDDEEFF10")) << "36 characters";
	EXPECT_FALSE(is_valid("{01A2B3C405D6E7F809AABB0CDDEEFF10}"));
	EXPECT_FALSE(is_valid("{01A2B3C4-05D6-E7F8-09AA-BB0CDDEEFF1}")) << "37 characters";
	EXPECT_FALSE(is_valid("{01A2B3C4-05D6-E7F8-09AA-BB0CDDEEFF10}}")) << "39 characters";
	EXPECT_FALSE(is_valid(""));
	EXPECT_FALSE(xylGuid_generator().is_valid_guid(xylVarString()));
}

TEST(xylGuid_generator, ValidationLooksAtIndices1To24Only) {
	const std::string valid = "{01A2B3C4-05D6-E7F8-09AA-BB0CDDEEFF10}";
	for (size_t i = 0; i < valid.size(); ++i) {
		std::string text = valid;
		text[i] = 'x';
		SCOPED_TRACE(text);
		EXPECT_EQ(is_valid(text), i < 1 || i > 24);
		if (i < 1 || i > 24) continue;
		text[i] = valid[i] == '-' ? '0' : '-'; // the one in the place of the other
		EXPECT_FALSE(is_valid(text));
	}
	EXPECT_TRUE(is_valid("x01A2B3C4-05D6-E7F8-09AA-xxxxxxxxxxxxx"));
}

// --- Registry
// -------------------------------------------------------------------------------------

class Guid_generator_test : public testing::Test {
protected:
	std::string registered(void* key) const {
		const auto entry = generator_.guids_.find(key);
		return entry == generator_.guids_.end() ? "none" : entry->second.char_p();
	}

	xylGuid_generator generator_;
	int objects_[3] = {};
};

TEST_F(Guid_generator_test, RegistryFollowsTheInvalidTextInAPlainObject) {
	static_assert(!std::is_polymorphic_v<xylGuid_generator>);
	EXPECT_EQ(static_cast<void*>(&generator_), &generator_.invalid_guid_);
	EXPECT_EQ(static_cast<void*>(&generator_.invalid_guid_ + 1), &generator_.guids_);
}

TEST_F(Guid_generator_test, ConstructionHasTheInvalidTextAndNoEntries) {
	EXPECT_EQ(std::string(generator_.invalid_guid_.char_p()), "*INVALID-GUID*");
	EXPECT_TRUE(generator_.guids_.empty());
	EXPECT_EQ(xyl_guid_generator_ptr, nullptr) << "the host's to set";
}

TEST_F(Guid_generator_test, EveryCallMakesANewGuidForTheSameEntry) {
	std::set<std::string> seen;
	for (int i = 0; i < 100; ++i) {
		const xylConstString<64> text = generator_.get_guid(&objects_[0]);
		EXPECT_TRUE(generator_.is_valid_guid(text)) << text.char_p();
		EXPECT_EQ(text_of(xylGuid_generator::string_to_guid(text.char_p()), true, true),
		          text.char_p());
		EXPECT_TRUE(seen.insert(text.char_p()).second);
		EXPECT_EQ(registered(&objects_[0]), text.char_p());
		EXPECT_EQ(generator_.guids_.size(), 1u);
	}
	generator_.get_guid(nullptr); // a key like any other
	EXPECT_EQ(generator_.guids_.size(), 2u);
}

TEST_F(Guid_generator_test, RegisteredTextReplacesTheFormer) {
	generator_.get_guid(&objects_[0]);
	generator_.register_guid(&objects_[0], xylVarString("any text"));
	generator_.register_guid(&objects_[1], xylConstString<16>("another"));
	EXPECT_EQ(registered(&objects_[0]), "any text");
	EXPECT_EQ(registered(&objects_[1]), "another");
	EXPECT_EQ(generator_.guids_.size(), 2u);
}

TEST_F(Guid_generator_test, TextOf64CharactersLeavesAnEmptyEntryAndAWarning) {
	const std::string longest(63, 'x');
	generator_.register_guid(&objects_[0], xylVarString(longest.c_str()));
	EXPECT_EQ(registered(&objects_[0]), longest);
	generator_.register_guid(&objects_[0], xylVarString((longest + "x").c_str()));
	EXPECT_EQ(registered(&objects_[0]), "");
	EXPECT_EQ(Recording_host::get().take_texts(),
	          std::vector<std::string>{"Could not set fixed-size(64) string to: " + longest + "x"});
}

TEST_F(Guid_generator_test, DeregisterForgetsOneKeyWhateverItsText) {
	generator_.register_guid(&objects_[0], xylVarString("first"));
	generator_.register_guid(&objects_[1], xylVarString("second"));
	generator_.deregister_guid(&objects_[2], xylVarString("first"));
	EXPECT_EQ(generator_.guids_.size(), 2u) << "an unknown key";
	generator_.deregister_guid(&objects_[0], xylVarString("second"));
	EXPECT_EQ(registered(&objects_[0]), "none");
	EXPECT_EQ(registered(&objects_[1]), "second");
	generator_.deregister_guid(&objects_[0], xylVarString());
	EXPECT_EQ(generator_.guids_.size(), 1u);
}

TEST_F(Guid_generator_test, CopiesHaveEntriesOfTheirOwn) {
	generator_.register_guid(&objects_[0], xylVarString("first"));
	generator_.invalid_guid_ = "changed";
	const xylGuid_generator copy(generator_);
	xylGuid_generator assigned;
	assigned.register_guid(&objects_[1], xylVarString("gone after the assignment"));
	assigned = generator_;
	generator_.register_guid(&objects_[0], xylVarString("changed later"));
	for (const xylGuid_generator* other :
	     {&copy, &static_cast<const xylGuid_generator&>(assigned)}) {
		EXPECT_EQ(other->guids_.size(), 1u);
		EXPECT_EQ(std::string(other->guids_.find(&objects_[0])->second.char_p()), "first");
		EXPECT_EQ(std::string(other->invalid_guid_.char_p()), "changed");
	}
	EXPECT_EQ(registered(&objects_[0]), "changed later");
}

} // namespace

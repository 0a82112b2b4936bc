#!/usr/bin/env python3
"""Shows Doxygen a header's plain comments as documentation: what INPUT_FILTER of the Doxyfile runs.

The headers are written to be read as they stand. Their conventions are turned into commands here:
the first comment tells about the file, `name` and two spaces about a parameter, Result about the
result, a word with a colon ("Threads:", "kept:") begins a paragraph of its own, and a comment counts
for all declarations that follow without an empty line.
"""

import re
import sys

SECTION = re.compile(r"\t?// ---")
COMMENT = re.compile(r"(\t?)//(?: (.*)|)$")
TRAILING = re.compile(r"(.*[;,)}{])(\s*)// (.*)$|(\s*[A-Za-z_]\w*)(\s*)// (.*)$")
CONTINUED = re.compile(r"\t*\s{2,}// (.*)$")
BODY = re.compile(r"\t?(class|struct|enum|union|namespace|template|extern \"C\"|public|protected|private)\b")
PARAMETER = re.compile(r"`(\w+)`  +(.*)")
RESULT = re.compile(r"Result  +(.*)")
PARAGRAPH = re.compile(r"(Threads|Failure|Allocation|Lifetime|Preconditions?|kept): ?(.*)")


def words_of(text):
    """The text of a comment's line with its conventions as commands."""
    text = re.sub(r"([@#\\])", r"\\\1", text)
    if match := PARAMETER.match(text):
        return f"@param {match[1]} {match[2]}"
    if match := RESULT.match(text):
        return f"@return {match[1]}"
    if match := PARAGRAPH.match(text):
        return f"@par {match[1]}\n/// {match[2]}"
    return text


def run_behind(lines, start):
    """How many lines behind a comment it counts for: 0 for a single declaration, or a body's."""
    base = "\t" if lines[start].startswith("\t") else ""
    end = start
    while end < len(lines) and re.match(base + r"[^\s#/{]", lines[end]) and not BODY.match(lines[end]):
        end += 1
        while end < len(lines) and re.match(base + r"(\t|  +)\S", lines[end]):
            end += 1  # the rest of a long declaration
    if lines[end - 1] == "};":
        end -= 1
    if not base and any(line.endswith("{") for line in lines[start:end]):
        return 0  # definitions behind the class
    declarations = sum(bool(re.search(r"[;}]( *//.*)?$", line)) for line in lines[start:end])
    return end - start if declarations > 1 else 0


def convert(lines):
    in_head, in_section, was_trailing, group_end = True, False, False, -1
    for number, line in enumerate(lines):
        comment = COMMENT.match(line)
        in_section = bool(SECTION.match(line)) or (in_section and bool(comment))
        continued = was_trailing and CONTINUED.match(line)
        trailing = not comment and not line.lstrip().startswith(("#", "//")) and TRAILING.match(line)
        if continued:
            yield f"///< {continued[1]}"
        elif comment and not in_section:
            if in_head and number == 0:
                yield "/// @file"
            yield f"{comment[1]}/// {words_of(comment[2] or '')}"
            if not in_head and (length := run_behind(lines, number + 1)):
                group_end = number + length
                yield "///@{"
        elif trailing:
            code, text = trailing[1] or trailing[4], trailing[3] or trailing[6]
            yield f"{code} ///< {text}"
        else:
            yield line
        if number == group_end:
            yield "///@}"
        was_trailing = bool(continued or trailing)
        in_head = in_head and bool(comment)


with open(sys.argv[1], encoding="utf-8") as header:
    print("\n".join(convert(header.read().split("\n"))))

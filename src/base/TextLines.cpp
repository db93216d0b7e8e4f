#include "base/TextLines.h"

#include "base/Assert.h"

#include <algorithm>
#include <cstring>
#include <optional>

namespace corvane {

namespace {

constexpr std::string_view Named = "\\tnr0";
constexpr std::string_view Meant{"\\\t\n\r\0", 5};

/// Length of the well-formed sequence at the start of the bytes, 0 if there is none.
std::size_t sequenceLength(std::string_view bytes) {
    const auto at = [&bytes](std::size_t i) { return static_cast<unsigned char>(bytes[i]); };
    const unsigned char lead = at(0);
    if (lead < 0x80)
        return 1;
    const std::size_t length = lead >= 0xF0 ? 4 : lead >= 0xE0 ? 3 : 2;
    if (lead < 0xC2 || lead > 0xF4 || bytes.size() < length)
        return 0;
    // The second byte decides over overlong forms, surrogates and what lies beyond the last
    // character.
    const unsigned char lowest = lead == 0xE0 ? 0xA0 : lead == 0xF0 ? 0x90 : 0x80;
    const unsigned char highest = lead == 0xED ? 0x9F : lead == 0xF4 ? 0x8F : 0xBF;
    if (at(1) < lowest || at(1) > highest)
        return 0;
    for (std::size_t i = 2; i < length; ++i)
        if ((at(i) & 0xC0U) != 0x80U)
            return 0;
    return length;
}

bool isSoundLine(std::string_view line) {
    for (std::size_t i = line.find('\\'); i != std::string_view::npos; i = line.find('\\', i + 2))
        if (i + 1 == line.size() || Named.find(line[i + 1]) == std::string_view::npos)
            return false;
    return line.find('\r') == std::string_view::npos;
}

/// With the line feed at its end, if there is one.
std::string_view firstLine(std::string_view bytes) {
    return bytes.substr(0, std::min(bytes.find('\n'), bytes.size() - 1) + 1);
}

/// Without the line feed at its end, and a carriage return before that.
std::string_view withoutEnd(std::string_view line) {
    if (!line.ends_with('\n'))
        return line;
    line.remove_suffix(1);
    if (line.ends_with('\r'))
        line.remove_suffix(1);
    return line;
}

void unescape(std::string_view text, std::string& target) {
    target.clear();
    for (std::size_t at = 0; at < text.size();) {
        const std::size_t mark = std::min(text.find('\\', at), text.size());
        target.append(text.substr(at, mark - at));
        if (mark < text.size())
            target += Meant[Named.find(text[mark + 1])];
        at = mark + 2;
    }
}

/// Appends an argument; false if it is no text.
bool escape(std::string_view text, std::string& target) {
    if (!IsUtf8(text))
        return false;
    const auto isSpecial = [](char c) {
        return c == '\\' || (c <= '\r' && Meant.find(c) != std::string_view::npos);
    };
    while (true) {
        const auto special = static_cast<std::size_t>(
            std::find_if(text.begin(), text.end(), isSpecial) - text.begin());
        target.append(text.substr(0, special));
        if (special == text.size())
            return true;
        (target += '\\') += Named[Meant.find(text[special])];
        text.remove_prefix(special + 1);
    }
}

/// How many lines there are; nothing if one of them is unsound.
std::optional<std::size_t> countLines(std::string_view bytes) {
    const bool plain =
        bytes.find('\\') == std::string_view::npos && bytes.find('\r') == std::string_view::npos;
    std::size_t count = 0;
    for (; !bytes.empty(); ++count) {
        const std::string_view line = firstLine(bytes);
        bytes.remove_prefix(line.size());
        if (line.size() >= MostArguments && // with fewer characters there can't be more
            std::count(line.begin(), line.end(), '\t') >=
                static_cast<std::ptrdiff_t>(MostArguments))
            return std::nullopt;
        if (!plain && !isSoundLine(withoutEnd(line)))
            return std::nullopt;
    }
    return count;
}

} // namespace

bool IsUtf8(std::string_view bytes) {
    while (!bytes.empty()) {
        // Most text is plain: whole words of it are passed over at once.
        for (std::uint64_t word = 0; bytes.size() >= sizeof word;) {
            std::memcpy(&word, bytes.data(), sizeof word);
            if ((word & 0x8080808080808080U) != 0)
                break;
            bytes.remove_prefix(sizeof word);
        }
        if (bytes.empty())
            return true;
        const std::size_t length = sequenceLength(bytes);
        if (length == 0)
            return false;
        bytes.remove_prefix(length);
    }
    return true;
}

bool KOIOReader::Load(std::string bytes) {
    Assert(!loaded_);
    if (bytes.find('\0') != std::string::npos || !IsUtf8(bytes))
        return false;
    const std::optional<std::size_t> lines = countLines(bytes);
    loaded_ = lines.has_value();
    remaining_ = lines.value_or(0);
    bytes_ = std::move(bytes);
    return loaded_;
}

void KOIOReader::ReadArray(std::string& prefix, std::vector<std::string>& values) {
    Assert(More());
    const std::string_view line = firstLine(std::string_view(bytes_).substr(at_));
    at_ += line.size();
    --remaining_;
    std::string_view rest = withoutEnd(line);
    std::size_t tab = rest.find('\t');
    unescape(rest.substr(0, tab), prefix);
    std::size_t count = 0;
    for (; tab != std::string_view::npos; ++count) {
        rest.remove_prefix(tab + 1);
        tab = rest.find('\t');
        if (count == values.size())
            values.emplace_back();
        unescape(rest.substr(0, tab), values[count]);
    }
    values.resize(count);
}

bool KOIOWriter::WriteArray(const std::string& prefix, const std::vector<std::string>& values) {
    const std::size_t before = target_.size();
    bool sound = values.size() < MostArguments && escape(prefix, target_);
    for (auto value = values.begin(); sound && value != values.end(); ++value) {
        target_ += '\t';
        sound = escape(*value, target_);
    }
    if (sound)
        target_ += '\n';
    else
        target_.resize(before);
    return sound;
}

} // namespace corvane

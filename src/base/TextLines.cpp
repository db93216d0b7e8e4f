#include "base/TextLines.h"

#include <algorithm>
#include <cstring>

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

std::optional<TextLines> TextLines::parse(std::string bytes) {
    if (bytes.find('\0') != std::string::npos || !IsUtf8(bytes))
        return std::nullopt;
    TextLines lines;
    lines.starts_.reserve(static_cast<std::size_t>(std::count(bytes.begin(), bytes.end(), '\n')) +
                          1);
    const bool plain =
        bytes.find('\\') == std::string::npos && bytes.find('\r') == std::string::npos;
    for (std::size_t at = 0; at < bytes.size();) {
        const std::size_t feed = bytes.find('\n', at);
        const std::size_t end = feed == std::string::npos ? bytes.size() : feed + 1;
        if (end - at >= MostArguments && // with fewer characters there can't be more
            std::count(bytes.begin() + static_cast<std::ptrdiff_t>(at),
                       bytes.begin() + static_cast<std::ptrdiff_t>(end),
                       '\t') >= static_cast<std::ptrdiff_t>(MostArguments))
            return std::nullopt;
        if (!plain && !isSoundLine(withoutEnd(std::string_view(bytes).substr(at, end - at))))
            return std::nullopt;
        lines.starts_.push_back(at);
        at = end;
    }
    lines.bytes_ = std::move(bytes);
    return lines;
}

void TextLines::read(std::size_t line, std::vector<std::string>& arguments) const {
    const std::size_t end = line + 1 < starts_.size() ? starts_[line + 1] : bytes_.size();
    std::string_view rest =
        withoutEnd(std::string_view(bytes_).substr(starts_[line], end - starts_[line]));
    std::size_t count = 0;
    for (bool more = true; more; ++count) {
        const std::size_t tab = rest.find('\t');
        more = tab != std::string_view::npos;
        if (count == arguments.size())
            arguments.emplace_back();
        unescape(rest.substr(0, tab), arguments[count]);
        rest.remove_prefix(more ? tab + 1 : rest.size());
    }
    arguments.resize(count);
}

bool TextLines::append(std::string& target, const std::vector<std::string>& arguments) {
    if (arguments.size() > MostArguments)
        return false;
    const std::size_t before = target.size();
    for (std::size_t i = 0; i < arguments.size(); ++i) {
        if (i > 0)
            target += '\t';
        if (!escape(arguments[i], target)) {
            target.resize(before);
            return false;
        }
    }
    target += '\n';
    return true;
}

bool TextLines::append(std::string& target, const std::string& first,
                       const std::vector<std::string>& others) {
    const std::size_t before = target.size();
    if (others.size() < MostArguments && escape(first, target)) {
        target += '\t';
        if (append(target, others)) {
            if (others.empty())
                target.erase(target.size() - 2, 1);
            return true;
        }
    }
    target.resize(before);
    return false;
}

} // namespace corvane

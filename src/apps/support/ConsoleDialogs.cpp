#include "apps/support/AnsweringDialogs.h"
#include "base/Text.h"

#include <iostream>
#include <unistd.h>

namespace corvane {

Answer ConsoleDialogs::Message(const MessageBox& box) {
    std::string line;
    for (const char c : box.text) {
        if (c == '\r' || c == '\n')
            line += line.empty() || line.back() == ' ' ? "" : " ";
        else
            line += c;
    }
    std::cerr << "corvanectl: " << line << '\n';
    return DismissedAnswer(box.buttons);
}

Answer AnsweringDialogs::Message(const MessageBox& box) {
    if (box.buttons != MessageBox::Buttons::YesNo)
        return ConsoleDialogs::Message(box);
    if (answer_)
        return *answer_ ? Answer::Yes : Answer::No;
    static_cast<void>(ConsoleDialogs::Message(box));
    if (::isatty(STDIN_FILENO) == 0)
        return Answer::No;
    std::cerr << "Yes or No? ";
    std::string line;
    std::getline(std::cin, line);
    return LowerCase(Trim(line)).starts_with('y') ? Answer::Yes : Answer::No;
}

} // namespace corvane

#include "light/LumoraUndoableSegmentChange.h"

#include "base/Numbers.h"
#include "base/Text.h"

namespace corvane {

template<class Kind>
bool LumoraUndoableSegmentChange<Kind>::Deserialize(History& history, std::string_view,
                                                    const std::vector<std::string>& Data) {
    document_ = documentOf(history);
    if (document_ == nullptr || Data.size() < 5)
        return false;
    channel_ = ReadInteger(Data[0]);
    onState_ = ReadNumber(Data[1]) != 0;
    element_ = ReadInteger(Data[2]);
    oldValue_ = Kind::read(Data[3]);
    newValue_ = Kind::read(Data[4]);
    return isSound();
}

template class LumoraUndoableSegmentChange<LumoraSegmentValues::Brightness>;
template class LumoraUndoableSegmentChange<LumoraSegmentValues::Brightness2>;
template class LumoraUndoableSegmentChange<LumoraSegmentValues::Function>;
template class LumoraUndoableSegmentChange<LumoraSegmentValues::Time>;

namespace LumoraSegmentValues {

Brightness::Value Brightness::read(std::string_view text) {
    return ReadInteger(text);
}

Function::Value Function::taken(std::string_view value) {
    return std::string(Trim(value));
}

std::string Time::write(Value value) {
    return WriteNumber(value);
}

Time::Value Time::read(std::string_view text) {
    return ReadNumber(text);
}

} // namespace LumoraSegmentValues

} // namespace corvane

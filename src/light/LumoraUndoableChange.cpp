#include "light/LumoraUndoableChange.h"

#include "base/Numbers.h"

namespace corvane {

const std::string& LumoraUndoableChange::PropertyName() const {
    static const std::string none;
    return none;
}

void LumoraUndoableTextChange::Initialize(LumoraDocument& document, int channel,
                                          std::string propertyName, std::string newValue) {
    document_ = &document;
    channel_ = channel;
    propertyName_ = std::move(propertyName);
    oldValue_ = document.Data(channel, propertyName_);
    newValue_ = std::move(newValue);
}

void LumoraUndoableTextChange::Serialize(std::string& prefix,
                                         std::vector<std::string>& Data) const {
    prefix = Prefix;
    Data = {std::to_string(channel_), propertyName_, oldValue_, newValue_};
}

bool LumoraUndoableTextChange::Deserialize(History& history, std::string_view,
                                           const std::vector<std::string>& Data) {
    document_ = documentOf(history);
    if (document_ == nullptr || Data.size() < 4)
        return false;
    channel_ = ReadInteger(Data[0]);
    propertyName_ = Data[1];
    oldValue_ = Data[2];
    newValue_ = Data[3];
    return LumoraDocument::takesData(channel_, propertyName_);
}

} // namespace corvane

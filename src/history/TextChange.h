#pragma once

#include "base/Numbers.h"
#include "base/TextLines.h"
#include "history/History.h"

namespace corvane {

/// A change of one value that a document gives and takes as text, under an index and the name of a
/// property. A document has for it `TextPrefix`, the operations `Data` and `setData`, and
/// `takesData`, which says whether a line of a file may carry this index with this name.
/// No file can hold a text that is not UTF-8.
template<class Document, class Base = UndoableChange>
class TextChange : public Base {
  public:
    /// The old value is what the document gives now.
    void Initialize(Document& document, int index, std::string propertyName, std::string newValue) {
        document_ = &document;
        index_ = index;
        propertyName_ = std::move(propertyName);
        oldValue_ = document.Data(index_, propertyName_);
        newValue_ = std::move(newValue);
    }

    void Redo() override { set(newValue_); }
    void Undo() override { set(oldValue_); }
    void Serialize(std::string& prefix, std::vector<std::string>& Data) const override {
        prefix = Document::TextPrefix;
        Data = {std::to_string(index_), propertyName_, oldValue_, newValue_};
    }
    [[nodiscard]] bool Deserialize(History& history, std::string_view,
                                   const std::vector<std::string>& Data) override {
        document_ = dynamic_cast<Document*>(&history.ManagingControl());
        if (document_ == nullptr || Data.size() < 4)
            return false;
        index_ = ReadInteger(Data[0]);
        propertyName_ = Data[1];
        oldValue_ = Data[2];
        newValue_ = Data[3];
        return isSound();
    }
    [[nodiscard]] bool isApplicable() const override {
        return document_ != nullptr && isSound() && IsUtf8(oldValue_) && IsUtf8(newValue_);
    }

  protected:
    /// What a line is refused for, whatever the document holds.
    [[nodiscard]] virtual bool isSound() const {
        return Document::takesData(index_, propertyName_);
    }
    [[nodiscard]] const Document* document() const { return document_; }
    [[nodiscard]] int index() const { return index_; }
    [[nodiscard]] const std::string& property() const { return propertyName_; }
    [[nodiscard]] const std::string& oldValue() const { return oldValue_; }
    [[nodiscard]] const std::string& newValue() const { return newValue_; }

  private:
    void set(const std::string& value) const {
        const std::string before = document_->Data(index_, propertyName_);
        const auto write = [this](const std::string& text) {
            document_->setData(this->access(), index_, propertyName_, text);
        };
        AllOrNothing([&] { write(value); }, [&] { write(before); });
    }

    Document* document_ = nullptr;
    int index_ = 0;
    std::string propertyName_;
    std::string oldValue_;
    std::string newValue_;
};

} // namespace corvane

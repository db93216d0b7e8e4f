#include "shell/MRUList.h"

#include "base/Assert.h"
#include "base/Text.h"
#include "system/File.h"

#include <algorithm>

namespace corvane {

namespace {

bool isSameFile(const std::string& a, const std::string& b) {
    return LowerCase(Trim(a)) == LowerCase(Trim(b));
}

} // namespace

MRUList::MRUList(const KORegistry& registry, const KOProductList& products)
    : registry_(registry), products_(products) {
    if (const auto key = registry_.OpenSettingsForReading())
        all_ = key->StringArrays("MRUList");
}

MRUList::~MRUList() {
    if (!changed_)
        return;
    if (auto key = registry_.OpenSettingsForWriting())
        key->setStringArrays("MRUList", all_);
}

void MRUList::Initialize(KOInterface& interface) {
    interface_ = &interface;
    onInterface_ = interface.InterfaceChanged.connect([this] { rebuild(); });
    rebuild();
}

void MRUList::AddFile(const std::string& filename) {
    if (!all_.empty() && isSameFile(all_.back(), filename))
        return;
    remove(filename);
    append(filename);
    changed_ = true;
    rebuild();
}

void MRUList::RenameFile(const std::string& oldFilename, const std::string& newFilename) {
    if (isSameFile(oldFilename, newFilename))
        return;
    remove(oldFilename);
    remove(newFilename);
    append(newFilename);
    changed_ = true;
    rebuild();
}

void MRUList::RemoveFile(const std::string& filename) {
    if (!remove(filename))
        return;
    changed_ = true;
    rebuild();
}

const std::string& MRUList::filename(int Index) const {
    Assert(Index >= 1 && Index <= count());
    return shown_[static_cast<std::size_t>(Index) - 1];
}

bool MRUList::remove(const std::string& filename) {
    const auto found = std::find_if(all_.begin(), all_.end(), [&](const std::string& other) {
        return isSameFile(other, filename);
    });
    if (found == all_.end())
        return false;
    all_.erase(found);
    return true;
}

void MRUList::append(const std::string& filename) {
    all_.push_back(filename);
    const std::string product = products_.ClassOfFile(filename);
    const auto isOfProduct = [&](const std::string& other) {
        return products_.ClassOfFile(other) == product;
    };
    while (std::count_if(all_.begin(), all_.end(), isOfProduct) > CountLimit)
        all_.erase(std::find_if(all_.begin(), all_.end(), isOfProduct));
}

void MRUList::rebuild() {
    shown_.clear();
    const std::string shownClass = interface_ == nullptr ? "" : interface_->InterfaceClass();
    if (!shownClass.empty())
        std::copy_if(
            all_.rbegin(), all_.rend(), std::back_inserter(shown_),
            [&](const std::string& file) { return products_.ClassOfFile(file) == shownClass; });
    Changed.raise();
}

} // namespace corvane

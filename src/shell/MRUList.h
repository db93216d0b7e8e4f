#pragma once

#include "link/KOInterface.h"
#include "system/KORegistry.h"

#include <string>
#include <vector>

namespace corvane {

/// The files used last: all are kept, and those of the product on show are shown, newest first.
/// Stored when it ends, if something has changed.
class MRUList {
  public:
    static constexpr int CountLimit = 4; ///< Of each product.

    MRUList(const KORegistry& registry, const KOProductList& products);
    ~MRUList();
    MRUList(const MRUList&) = delete;
    MRUList& operator=(const MRUList&) = delete;

    Event<> Changed;

    /// From now on the files of this interface's control show. It must outlive the list.
    void Initialize(KOInterface& interface);
    void AddFile(const std::string& filename);
    void RenameFile(const std::string& oldFilename, const std::string& newFilename);
    void RemoveFile(const std::string& filename);

    [[nodiscard]] int count() const { return static_cast<int>(shown_.size()); }
    /// From 1, the newest.
    [[nodiscard]] const std::string& filename(int Index) const;

  private:
    bool remove(const std::string& filename);
    void append(const std::string& filename);
    void rebuild();

    const KORegistry& registry_;
    const KOProductList& products_;
    KOInterface* interface_ = nullptr;
    std::vector<std::string> all_; // newest last
    std::vector<std::string> shown_;
    bool changed_ = false;
    Connection onInterface_;
};

} // namespace corvane

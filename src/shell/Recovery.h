#pragma once

#include "history/LostJournal.h"
#include "link/KOInterface.h"
#include "link/Workplace.h"

namespace corvane {

/// Gives back what programs that did not close properly have lost: asks once, for one document or
/// with a list of them, and opens those that the person wants in the control of their product.
class Recovery {
  public:
    /// Both must outlive this.
    Recovery(const Workplace& place, KOInterface& interface)
        : place_(place), interface_(interface) {}

    /// Without journals it does nothing.
    void Offer();
    /// Shows the control of a class, or with none any control. False if a document that was given
    /// back is in its place and the person does not let it go.
    [[nodiscard]] bool ShowControl(const std::string& className);

  private:
    [[nodiscard]] const KOProductProfile* productOf(const LostJournal& lost) const;
    void take(const LostJournal& lost, bool wanted);
    [[nodiscard]] bool wanted(const LostJournal& lost) const;
    [[nodiscard]] std::optional<std::vector<bool>>
    pick(const std::vector<const LostJournal*>& sound,
         const std::vector<const LostJournal*>& damaged) const;
    void giveBack(const LostJournal& lost, const std::string& className);
    [[nodiscard]] History* freeHistory() const;

    const Workplace& place_;
    KOInterface& interface_;
};

} // namespace corvane

#pragma once

#include "controls/Dialogs.h"

#include <QDialog>

class QListWidget;

namespace corvane {

/// A question about a list, with a box to tick at each item that can be picked.
class ListDialog final : public QDialog {
  public:
    ListDialog(const ListQuestion& question, QWidget* parent);

    [[nodiscard]] std::vector<bool> picked() const;

  private:
    QListWidget* list_;
};

} // namespace corvane

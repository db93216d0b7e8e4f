#pragma once

#include "shell/LinkStatus.h"

#include <QLabel>
#include <QTimer>
#include <QWidget>

namespace corvane {

/// The window: drives the link from its timer and shows what the link says.
class LinkWindow final : public QWidget {
  public:
    LinkWindow(KOCommLink& link, LinkStatus& status);

  private:
    void show(const LinkStatus& status);

    QLabel headline_;
    QLabel detail_;
    QTimer tmrUpdate_;
    Connection onChanged_;
};

} // namespace corvane

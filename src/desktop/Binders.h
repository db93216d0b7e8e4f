#pragma once

#include "controls/ChildControl.h"
#include "controls/Menu.h"

#include <QObject>

#include <functional>

class QAbstractButton;
class QAction;
class QLabel;
class QMenu;
class QMenuBar;
class QWidget;

namespace corvane {

/// Runs `follow` now and whenever the child control changes, as long as the object lives.
void Follow(QObject* object, ChildControl& child, std::function<void()> follow);
/// Runs `react` whenever the event is raised, as long as the object lives.
template<class... Args, class React>
void On(QObject* object, Event<Args...>& event, React react);

/// Visibility, enabling and tool tip of any widget. With an accessible name that is set already the
/// rest is the widget's own.
void BindWidget(QWidget* widget, ChildControl& child);
void Bind(QLabel* label, Label& child);
void Bind(QAbstractButton* button, Button& child);
/// Drives the timer as long as the object lives.
void Bind(QObject* object, Timer& child);
void Bind(QAction* action, MenuItem& child);
/// Fills a menu bar or menu with entries and submenus.
void Bind(QMenuBar* bar, const std::vector<MenuPlace>& places);
void Bind(QMenu* menu, const std::vector<MenuPlace>& places);

/// Holds a connection as long as its parent lives.
class HeldConnection : public QObject {
  public:
    HeldConnection(QObject* parent, Connection connection)
        : QObject(parent), connection_(std::move(connection)) {}

  private:
    Connection connection_;
};

/// Ends all connections that are held within the object, whose children are about to go.
void LetGo(QObject* object);

template<class... Args, class React>
void On(QObject* object, Event<Args...>& event, React react) {
    new HeldConnection(object, event.connect(std::move(react)));
}

} // namespace corvane

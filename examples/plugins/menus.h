#pragma once

// The menu bar of a core plugin's window, shared by both core plugins: a menu is made
// when a plugin first asks for it, and the menus stand in the order File, Tools,
// Help, whichever plugin asks first.

#include "workbench.h"

#include <QtCore/QCoreApplication>
#include <QtWidgets/QMainWindow>
#include <QtWidgets/QMenu>
#include <QtWidgets/QMenuBar>

#include <map>

namespace Editor {

class Menus
{
public:
    // The window must outlive this object; the menus are the window's children.
    explicit Menus(QMainWindow* window)
        : m_window(window)
    {
    }

    QMenu* menu(Menu which)
    {
        const auto found = m_menus.find(which);
        if (found != m_menus.end())
            return found->second;
        static const std::map<Menu, const char*> titles {
            { Menu::File, QT_TRANSLATE_NOOP("Editor::Menus", "&File") },
            { Menu::Tools, QT_TRANSLATE_NOOP("Editor::Menus", "&Tools") },
            { Menu::Help, QT_TRANSLATE_NOOP("Editor::Menus", "&Help") },
        };
        auto* created
            = new QMenu(QCoreApplication::translate("Editor::Menus", titles.at(which)), m_window);
        QAction* before = nullptr;
        for (const auto& [other, existing] : m_menus) {
            if (other > which) {
                before = existing->menuAction();
                break;
            }
        }
        m_window->menuBar()->insertMenu(before, created);
        m_menus.emplace(which, created);
        return created;
    }

private:
    QMainWindow* m_window;
    std::map<Menu, QMenu*> m_menus;
};

} // namespace Editor

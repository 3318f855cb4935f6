// Included ahead of every file of diagrams and windows; its headers are guarded themselves.
#include <gtkmm/box.h>
#include <gtkmm/button.h>
#include <gtkmm/entry.h>
#include <gtkmm/label.h>
#include <gtkmm/menu.h>
#include <gtkmm/notebook.h>
#include <gtkmm/table.h>
#include <gtkmm/toolbar.h>
#include <gtkmm/treestore.h>
#include <gtkmm/treeview.h>
#include <gtkmm/window.h>

#include "model.h"

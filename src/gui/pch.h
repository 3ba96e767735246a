// Precompiled header of the GUI library; only speeds the build.
#pragma once

#include "core/pch.h"

#include <QAction>
#include <QDialog>
#include <QMainWindow>
#include <QMenu>
#include <QWidget>

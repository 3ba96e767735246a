// Precompiled header of the tests; only speeds the build.
#pragma once

#include "core/pch.h"

#include <QSignalSpy>
#include <QTemporaryDir>
#include <QtTest>

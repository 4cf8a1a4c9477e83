// SPDX-License-Identifier: MIT
#pragma once

#include <gtest/gtest.h>

#include <string>

#include "tests/support/TemporaryFolder.h"
#include "tests/support/TemporaryVariables.h"
#include "tests/support/TestProcess.h"

namespace tarvik::tests {

/// Variables that GIO and the input read, for settings of a test's own that are the same whether or
/// not GNOME is installed. IBus is missing. A base before everything that reads them.
class GnomeEnvironment {
  protected:
    /// `store` is the one of GIO's stores that has the settings.
    explicit GnomeEnvironment(const std::string& store) {
        variables.set("WAYLAND_DISPLAY", "wayland-nowhere");
        variables.set("IBUS_ADDRESS_FILE", folder / "no-ibus");
        variables.set("XDG_RUNTIME_DIR", folder.path());
        variables.set("XDG_CONFIG_HOME", folder.path());
        EXPECT_EQ(TestProcess::run({"glib-compile-schemas", "--targetdir=" + folder.path().string(),
                                    TARVIK_GNOME_SETTINGS})
                      .status,
                  0);
        variables.set("GSETTINGS_BACKEND", store);
        variables.set("GSETTINGS_SCHEMA_DIR", folder.path());
        variables.set("XDG_DATA_DIRS", folder.path());
    }

    TemporaryFolder folder;
    TemporaryVariables variables;
};

}  // namespace tarvik::tests

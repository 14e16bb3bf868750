# SPDX-License-Identifier: Apache-2.0
"""The include checker sees what it is there to see."""

import pathlib
import tempfile
import unittest

import include_rules


class IncludeRulesTest(unittest.TestCase):
    def found(self, files):
        with tempfile.TemporaryDirectory() as folder:
            root = pathlib.Path(folder)
            for path, text in files.items():
                (root / path).parent.mkdir(parents=True, exist_ok=True)
                (root / path).write_text(text, encoding="utf-8")
            return include_rules.violations(root)

    def assert_allowed(self, path, line):
        self.assertEqual(self.found({path: line + "\n"}), [])

    def assert_broken(self, path, line):
        lines = self.found({path: "// first line\n" + line + "\n"})
        self.assertEqual(len(lines), 1, lines)
        self.assertTrue(lines[0].startswith(path + ": includes "), lines)

    def test_downwards_is_allowed(self):
        self.assert_allowed("plugin/a.h", '#include "statemachine/state_machine.h"')
        self.assert_allowed("player/a.cc", '#include "components/component_records.h"')
        self.assert_allowed("support/a.cc", '#include "support/a.h"')
        self.assert_allowed("events/a.cc", '#include "statemachine/state_machine.h"')

    def test_upwards_is_not(self):
        self.assert_broken("support/a.cc", '#include "player/player.h"')
        self.assert_broken("player/a.cc", '#include "statemachine/state_machine.h"')
        self.assert_broken("components/a.cc", '#include "player/player.h"')
        self.assert_broken("components/a.h", '#include "parental/parental_rating.h"')
        self.assert_broken("plugin/a.cc", '#include "events/a.h"')
        self.assert_broken("host/a.h", '#include "support/a.h"')

    def test_the_plugins_header_is_for_sources(self):
        line = '#include "plugin/av_control_plugin.h"'
        self.assert_allowed("statemachine/a.cc", line)
        self.assert_broken("statemachine/a.h", line)
        self.assert_broken("support/a.cc", line)
        self.assert_broken("player/a.cc", '#include "plugin/special_urls.h"')

    def test_plugin_and_platform_meet_in_host_only(self):
        self.assert_broken("plugin/a.cc", '#include "platform/pluginhost/shell.h"')
        self.assert_broken("platform/runner/a.cc", '#include "plugin/av_control_plugin.h"')
        self.assert_broken("platform/mediamgmnt/a.cc", '#include "support/number_text.h"')
        self.assert_allowed("platform/mediamgmnt/a.cc", '#include "host/mediamgmnt.h"')

    def test_platform_rooms_use_each_others_front_doors(self):
        self.assert_allowed("platform/script/a.cc", '#include "platform/pluginhost/shell.h"')
        self.assert_broken("platform/script/a.cc", '#include "platform/pluginhost/object_state.h"')
        self.assert_broken("platform/pluginhost/a.cc", '#include "platform/script/a.h"')
        self.assert_broken("platform/script/a.cc", '#include "platform/runner/a.h"')
        self.assert_allowed("platform/runner/a.cc", '#include "platform/script/a.h"')
        self.assert_broken("platform/newroom/a.cc", '#include "platform/script/a.h"')

    def test_plain_rooms_need_no_other_library(self):
        self.assert_broken("player/a.cc", "#include <gst/gst.h>")
        self.assert_broken("platform/pluginhost/a.cc", "#  include <JavaScriptCore/JavaScript.h>")
        self.assert_allowed("player/a.cc", "#include <sys/types.h>")
        self.assert_allowed("player/a.cc", "#include <vector>")
        self.assert_allowed("platform/mediamgmnt/a.cc", "#include <gst/gst.h>")

    def test_minimal_host_stands_alone(self):
        self.assert_broken("examples/minimal-host/a.cc", '#include "platform/pluginhost/shell.h"')
        self.assert_broken("examples/minimal-host/a.cc", '#include "plugin/av_control_plugin.h"')
        self.assert_allowed("examples/minimal-host/a.cc", '#include "host/corvel_native.h"')

    def test_tests_may_include_anything(self):
        self.assert_allowed("tests/unit/plugin/a.cc", '#include "plugin/av_control_plugin.h"')

    def test_templates_are_sources_too(self):
        self.assert_broken("plugin/a.cc.in", '#include "platform/pluginhost/shell.h"')

    def test_an_empty_folder_is_an_error(self):
        with tempfile.TemporaryDirectory() as folder:
            self.assertEqual(include_rules.main([folder]), 2)


if __name__ == "__main__":
    unittest.main()

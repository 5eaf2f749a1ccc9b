"""Reads what `boardctl info --format metrics` prints with the parser that monitors use."""
import subprocess
import sys
import tempfile
import unittest

from prometheus_client.parser import text_string_to_metric_families

BOARDCTL = sys.argv.pop(1)


def metrics(*words):
    """The samples by (name, labels) and the exit status."""
    done = subprocess.run([BOARDCTL, "info", "--format", "metrics", *words], capture_output=True, text=True)
    samples = {}
    for family in text_string_to_metric_families(done.stdout):
        assert family.documentation and family.type == "gauge", family
        for sample in family.samples:
            samples[(sample.name, tuple(sorted(sample.labels.items())))] = sample.value
    load = samples.pop(("board_cpu_load_ratio", (("span", "last"),)))  # the machine's own
    assert 0 <= load <= 1, load
    return samples, done.returncode


class Metrics(unittest.TestCase):
    def test_the_simulated_board_gives_every_figure(self):
        samples, status = metrics()
        self.assertEqual(status, 0)
        self.assertEqual(
            samples,
            {
                ("board_temperature_celsius", (("name", "thermal"),)): 41.5,
                ("board_fan_speed_level", (("name", "fan"), ("speed", "full"))): 0,
                ("board_fan_speed_level", (("name", "fan"), ("speed", "high"))): 0,
                ("board_fan_speed_level", (("name", "fan"), ("speed", "low"))): 0,
                ("board_fan_speed_level", (("name", "fan"), ("speed", "off"))): 1,
                ("board_power_status", (("name", "power"),)): 1,
                ("board_led_state", (("name", "status"),)): 0,
                ("board_dsp_channels", ()): 120,
                ("board_sip_legs", ()): 240,
            },
        )

    def test_what_can_not_be_read_is_left_out_and_names_are_escaped(self):
        with tempfile.TemporaryDirectory() as folder:
            with open(folder + "/supply", "w", encoding="ascii") as file:
                file.write("-1\n")
            with open(folder + "/board.toml", "w", encoding="utf-8") as file:
                file.write("""
[[thermal]]
name = "gone"
device = "gone"
maximum = 85
[[power]]
name = 'a "b" \\ \u00e9'
device = "supply"
[descriptor]
device = "gone"
[voip]
default_sip_legs = 30
""")
            samples, status = metrics("--board", folder + "/board.toml")
        self.assertEqual(status, 1)
        self.assertEqual(
            samples,
            {
                ("board_power_status", (("name", 'a "b" \\ \u00e9'),)): 4294967295,
                ("board_sip_legs", ()): 30,
            },
        )


if __name__ == "__main__":
    unittest.main()

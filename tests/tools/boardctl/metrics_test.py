"""Reads what `boardctl info --format metrics` prints with the parser that monitors use."""
import subprocess
import sys
import tempfile

from prometheus_client.parser import text_string_to_metric_families

PROFILE = """[[thermal]]
name = "gone"
device = "gone"
maximum = 85
[[power]]
name = 'a "b" \\ \u00e9'
device = "supply"
[[fan]]
name = "fan"
device = "supply"
maximum = 60000
tach = "supply"
[descriptor]
device = "gone"
[voip]
default_sip_legs = 30
"""
FAN = {f"board_fan_speed_level name=fan speed={speed}": speed == "off" for speed in ("full", "high", "low", "off")}
SIMULATED = {"board_temperature_celsius name=thermal": 41.5, **FAN, "board_power_status name=power": 1,
             "board_led_state name=status": 0, "board_dsp_channels": 120, "board_sip_legs": 240}
SIMULATED = {f"{sample} simulated=true": value for sample, value in SIMULATED.items()}
FAULTY = {'board_power_status name=a "b" \\ \u00e9': 9999, **FAN, "board_fan_rpm name=fan": 9999, "board_sip_legs": 30}


def check(words, expected, status, mark=""):
    done = subprocess.run([sys.argv[1], "info", "--format", "metrics", *words], capture_output=True, text=True)
    samples = {}
    for family in text_string_to_metric_families(done.stdout):
        assert family.documentation and family.type == "gauge", family
        for sample in family.samples:
            samples[" ".join([sample.name] + [f"{k}={v}" for k, v in sample.labels.items()])] = sample.value
    load = samples.pop("board_cpu_load_ratio span=boot" + mark)  # the machine's own
    assert 0 <= load <= 1 and samples == expected and done.returncode == status, (load, samples, done)


check(["--sim"], SIMULATED, 0, " simulated=true")
with tempfile.TemporaryDirectory() as folder:
    for name, content in ("supply", "9999\n"), ("board.toml", PROFILE):
        with open(f"{folder}/{name}", "w", encoding="utf-8") as file:
            file.write(content)
    check(["--board", folder + "/board.toml"], FAULTY, 1)

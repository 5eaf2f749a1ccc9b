"""Reads the output of `boardctl info --format metrics` with the parser of a monitoring system."""
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
UP = {f"board_device_up kind={kind} device={device}": 1 for kind, device in (
    ("fan", "fan"), ("thermal", "thermal"), ("power", "power"), ("led", "status"), ("descriptor", "board-descr-driver"),
    ("voip", "resource-driver"), ("preferences", "preferences"), ("firmware", "firmware"))}
SIMULATED = {"board_info platform=0x1234 product=0xabcd firmware=5.2-dev/1234": 1, **UP,
             "board_temperature_celsius name=thermal": 41.5, "board_temperature_max_celsius name=thermal": 85, **FAN,
             "board_power_status name=power": 1, "board_led_state name=status": 0, "board_dsp_channels": 120, "board_sip_legs": 240}
SIMULATED = {f"{sample} simulated=true": value for sample, value in SIMULATED.items()}
NAMED = 'a "b" \\ \u00e9'
FAULTY = {f"board_device_up kind={kind} device={device}": isUp for kind, device, isUp in (
    ("fan", "fan", 1), ("thermal", "gone", 0), ("power", NAMED, 1), ("descriptor", "board-descr-driver", 0),
    ("voip", "resource-driver", 1))}
FAULTY |= {"board_temperature_max_celsius name=gone": 85, f"board_power_status name={NAMED}": 9999, **FAN, "board_fan_rpm name=fan": 9999, "board_sip_legs": 30}


def check(output, words, expected, mark=""):
    done = subprocess.run([sys.argv[1], "info", "--format", "metrics", "-o", output, *words], capture_output=True)
    with open(output, encoding="utf-8") as file:
        text = file.read()
    samples = {}
    for family in text_string_to_metric_families(text):
        assert family.documentation and family.type == "gauge", family
        for sample in family.samples:
            samples[" ".join([sample.name] + [f"{k}={v}" for k, v in sample.labels.items()])] = sample.value
    load = samples.pop("board_cpu_load_ratio span=boot" + mark)  # the machine's own
    assert 0 <= load <= 1 and samples == expected and done.returncode == 0 and not done.stdout + done.stderr, (load, samples, done)


with tempfile.TemporaryDirectory() as folder:
    for name, content in ("supply", "9999\n"), ("board.toml", PROFILE):
        with open(f"{folder}/{name}", "w", encoding="utf-8") as file:
            file.write(content)
    check(folder + "/figures", ["--sim"], SIMULATED, " simulated=true")
    check(folder + "/figures", ["--board", folder + "/board.toml"], FAULTY)

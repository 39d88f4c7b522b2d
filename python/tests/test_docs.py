"""The pages that say what each slot and reading means are what the library says now."""
import pathlib
import subprocess
import sys

ROOT = pathlib.Path(__file__).resolve().parents[2]


def test_slot_pages_and_readme_tables_are_up_to_date():
    run = subprocess.run([sys.executable, str(ROOT / "scripts" / "hand_pages.py"), "--check"],
                         capture_output=True, text=True)
    assert run.returncode == 0, run.stdout + run.stderr

"""The models of the lock protocols."""

import pathlib
import subprocess

CHECK = pathlib.Path(__file__).parent.parent / "tools/check-models"


def try_models(_bench, _seconds):
    """Passes on the lines that the check prints; nothing where there are no models."""
    if not CHECK.exists():
        return None
    result = subprocess.run([CHECK], text=True, stdout=subprocess.PIPE, stderr=subprocess.STDOUT,
                            check=False)
    lines = result.stdout.strip().splitlines()
    if result.returncode != 0:
        lines = [f"exit status {result.returncode}"] + [f"    lost: {line}" for line in lines]
    return "\n".join(lines)


FAULTS = [("models", 1, try_models)]

"""The models of the lock protocols."""

import pathlib
import subprocess

CHECK = pathlib.Path(__file__).parent.parent / "tools/check-models"


def try_models(_bench, _seconds):
    """Counts and passes on the lines that the check prints; nothing where there are no models."""
    if not CHECK.exists():
        return None
    result = subprocess.run([CHECK], text=True, stdout=subprocess.PIPE, stderr=subprocess.STDOUT,
                            check=False)
    lines = result.stdout.strip().splitlines()
    if result.returncode == 0:
        return "\n".join([f"{len(lines)} searches, each with the outcome that it must have"]
                         + [f"    {line}" for line in lines])
    return "\n".join([f"tools/check-models ends with {result.returncode}"]
                     + [f"    lost: {line}" for line in lines])


# It takes the time that it takes; the others share what is left.
FAULTS = [("models", 1, try_models)]

"""Programs that tests run."""
import os
import subprocess


def run(*command, folder, **environment):
    """The output of a command that must succeed, run without what a developer's environment says about the package."""
    unset = ("PYTHONPATH", "VELMAR_LIBRARY", "VELMAR_TOOL")
    clean = {name: value for name, value in os.environ.items() if name not in unset}
    done = subprocess.run([str(part) for part in command], cwd=folder, env={**clean, **environment},
                          capture_output=True, text=True, timeout=250, stdin=subprocess.DEVNULL)
    if done.returncode != 0:
        raise RuntimeError(f"{command} ended with {done.returncode}:\n{done.stdout}{done.stderr}")
    return done.stdout

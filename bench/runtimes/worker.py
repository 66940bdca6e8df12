"""A runtime in a process of its own, asked through pipes, so that runtimes can take turns within
one run.

A worker reads one command a line, its words separated by tabs, and answers with microseconds on one
line:

    load MODEL                                            how long loading took
    run INPUT CHANNELS HEIGHT WIDTH REPEATS OUTPUT        how long each repeat took

INPUT and OUTPUT are files of float32 values; OUTPUT is what the last repeat returned. Reading and
writing the files is not timed.
"""

import os
import subprocess


class Worker:
    """Owns the process; `close` ends it. `settings` go into its environment."""

    def __init__(self, name, command, settings):
        self.name = name
        self.process = subprocess.Popen(
            command,
            stdin=subprocess.PIPE,
            stdout=subprocess.PIPE,
            text=True,
            env={**os.environ, **settings},
        )

    def ask(self, *words):
        """The answer in milliseconds, a list. RuntimeError when the worker has died."""
        self.process.stdin.write("\t".join(str(word) for word in words) + "\n")
        self.process.stdin.flush()
        answer = self.process.stdout.readline()
        if not answer:
            raise RuntimeError(
                f'{self.name} ended with {self.process.wait()} at: {" ".join(map(str, words))}'
            )
        return [float(value) / 1000 for value in answer.split()]

    def close(self):
        self.process.stdin.close()
        self.process.wait()

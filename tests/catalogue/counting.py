"""Counting for the proofs of the catalogue, in the words that ./check adds up."""

import sys


class Counting:
    def __init__(self):
        self.passed = 0
        self.failed = 0

    def prove(self, name, wrong):
        """`wrong`: what speaks against it, a line each; nothing: it holds."""
        if wrong:
            self.failed += 1
            print(f"  FAILED  {name}")
            print("".join(f"            {line}\n" for line in wrong), end="")
        else:
            self.passed += 1
            print(f"  ok      {name}")

    def finish(self):
        print(f"{self.passed} passed, {self.failed} failed, 0 skipped")
        sys.exit(0 if self.passed and not self.failed else 1)

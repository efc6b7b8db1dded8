"""What was counted, and what was lost."""

import collections
import statistics


class Figures:
    def __init__(self):
        self.counts = collections.Counter()
        self.kills = collections.Counter()
        self.waits = []  # seconds that an undisturbed share took
        self.memory = collections.defaultdict(list)  # program -> [(seconds, kilobytes)]
        self.most = collections.Counter()  # folder -> most entries seen
        self.losses = []

    def loss(self, what):
        """Something that was promised and did not happen."""
        self.losses.append(what)
        print("LOSS:", what, flush=True)

    def memory_of(self, program, seconds):
        """Mean kilobytes in the first and in the last sixth of the run; a minute of ten."""
        samples = self.memory[program]
        first = [size for at, size in samples if at <= seconds / 6]
        last = [size for at, size in samples if at >= seconds * 5 / 6]
        return (statistics.mean(first), statistics.mean(last)) if first and last else None

    def check_memory(self, seconds):
        """Growth that goes on is a loss. The first minute holds the start, so a little is allowed;
        a short run is all start."""
        for program in self.memory:
            means = self.memory_of(program, seconds)
            if seconds >= 300 and means and means[1] > means[0] * 1.1 + 1024:
                self.loss(f"{program} grew from {means[0]:.0f} KB to {means[1]:.0f} KB")

    def print(self, seconds):
        count = self.counts
        print(f"shares    {count['shares']} begun, {count['opened']} opened, "
              f"{count['not opened']} not opened after a kill, {count['killed']} killed; "
              f"{count['late items']} items left out as late")
        print(f"launches  {count['calls']} received, {count['answered']} answered, "
              f"{count['late']} of shares that were killed, {count['refused']} not answered by a "
              f"receiver that was killed")
        print(f"files     {count['verified']} verified while the share waited, "
              f"{count['bytes']} bytes; {count['gone']} gone with a killed share; "
              f"{count['drafts']} drafts with {count['draft files']} files verified")
        print(f"clients   {count['given']} drafts given, {count['logins']} logins; "
              f"{count['unknown']} drafts of shares that were told that they were not opened")
        print(f"stores    {count['writes']} writings of {count['written bytes']} bytes, "
              f"{count['reads']} readings of {count['records']} records by programs, "
              f"{count['unlocked reads']} without a lock, {count['reads killed']} killed")
        print(f"resident  {count['rounds']} rounds, {count['resident files']} files, "
              f"{count['resident records']} records read")
        print("kills     " + ", ".join(f"{n} {kind}" for kind, n in sorted(self.kills.items())))
        if self.waits:
            print(f"a share   median {statistics.median(self.waits):.2f} s, "
                  f"longest {max(self.waits):.2f} s, its turn included")
        for program in sorted(self.memory):
            means = self.memory_of(program, seconds)
            if means:
                print(f"memory    {program}: {means[0]:.0f} KB in the first sixth of the run, "
                      f"{means[1]:.0f} KB in the last, "
                      f"{max(size for _, size in self.memory[program])} KB at most")
        print("folders   at most " + ", ".join(f"{n} in {f}" for f, n in sorted(self.most.items())))
        print(f"lost      {len(self.losses)}")

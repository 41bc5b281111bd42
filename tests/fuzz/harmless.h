// What keeps a fuzzed programme from doing harm: a scratch directory, a bound on its time, and a host that does
// nothing.
#pragma once

// Once: the scratch directory, the bound on files, the timer.
void harmless();
// From here to the end the process is in the scratch directory, sleeps end at once, and an interrupt comes when the
// time is up or the process stack too deep. What was left in the directory is removed at the end.
void beginharmless();
void endharmless();
// Is the present input to end?
bool timeisup();

"""The names of the tests that belong to the headings of docs/habits.md."""
import re


def slug(heading):
    """"Seek is always S_OK" is SeekIsAlwaysSOK: a test suite has no underscores."""
    return "".join(word[0].upper() + word[1:] for word in re.findall(r"[A-Za-z0-9]+", heading))

"""Thins out what shows a fault, as long as it shows: by texts, then by tokens, then by bytes."""


def thin(items, shows):
    """The smallest list found, by dropping ever smaller runs of items."""
    size = max(len(items) // 2, 1)
    while items:
        place, dropped = 0, False
        while place < len(items):
            rest = items[:place] + items[place + size:]
            if shows(rest):
                items, dropped = rest, True
            else:
                place += size
        if size == 1 and not dropped:
            break
        size = max(size // 2, 1)
    return items


def minimise(lines, shows, most):
    """A session, as a list of texts of tokens, to the bytes that still show the fault. `shows` takes bytes; it is asked so
    many times at most."""
    left = [most]

    def ask(text):
        left[0] -= 1
        return left[0] >= 0 and shows(text)

    def written(texts):
        return b"".join(b" ".join(tokens) + b"\n" for tokens in texts)

    lines = thin(lines, lambda some: ask(written(some)))
    for place in range(len(lines)):
        around = lines[:place], lines[place + 1:]
        lines[place] = thin(lines[place], lambda tokens, around=around: ask(written(around[0] + [tokens] + around[1])))
    text = written(lines)
    if len(text) < 600:
        text = bytes(thin(list(text), lambda some: ask(bytes(some))))
    return text

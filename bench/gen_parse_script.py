#!/usr/bin/env python3
"""Writes a long script of names, numbers, strings and comments for the lexing and parsing benchmark.

Usage: gen_parse_script.py OUTPUT [--lines N] [--seed S]

Every line is one of: a "//" comment, a "/* */" comment (some spanning several lines), an
assignment of an arithmetic expression (numbers in their four forms, names, indexed names, matrix
literals) to a name or a dotted name, an assignment of a string literal (some with escapes, some
spanning two lines), or a print statement. The output is the same for the same seed and line count.
"""

import argparse
import random

# Stems of generated names; a name always ends in "_<digits>", so it is never a keyword.
STEMS = ["alpha", "beta", "gamma", "delta", "price", "income", "wage", "theta", "sigma", "omega",
         "kappa", "coef", "sample", "draw", "x", "y", "z", "u", "resid", "weight"]
# Member names used after a dot (plain words that are not keywords).
MEMBERS = ["beta", "theta", "sigma", "value", "coef", "se", "lower", "upper", "label", "first",
           "second", "fit", "loglik", "prior", "post"]
WORDS = ["the", "posterior", "mean", "of", "draws", "is", "shown", "here", "model", "fit", "with",
         "flat", "prior", "chain", "one", "two", "burn", "in", "thinning", "data", "set"]
# The seed of the committed benchmark figures.
DEFAULT_SEED = 20240601
ESCAPES = ["\\t", "\\n", "\\\"", "\\\\", "\\r"]
INDENTS = ["", "", "", "  ", "    ", "\t"]


def name(rng):
    """A name like alpha_12."""
    return "%s_%d" % (rng.choice(STEMS), rng.randrange(0, 1000))


def dotted_name(rng):
    """A name followed by one to three members, like alpha_1.beta.se."""
    return name(rng) + "".join("." + rng.choice(MEMBERS) for _ in range(rng.randint(1, 3)))


def number(rng):
    """A number in one of the four forms: 12, 1.5e-3 or 2., .25E+4, 7e2."""
    digits = str(rng.randrange(0, 100000))
    form = rng.randrange(4)
    exponent = ""
    if form in (1, 2) and rng.random() < 0.4 or form == 3:
        exponent = rng.choice("eE") + rng.choice(["", "+", "-"]) + str(rng.randrange(0, 40))
    if form == 0:
        return digits
    if form == 1:
        fraction = str(rng.randrange(0, 10000)) if rng.random() < 0.8 else ""
        return digits + "." + fraction + exponent
    if form == 2:
        return "." + str(rng.randrange(0, 10000)) + exponent
    return digits + exponent


def operand(rng):
    """A number, a name, an indexed name or a small matrix literal."""
    kind = rng.random()
    if kind < 0.35:
        return number(rng)
    if kind < 0.65:
        return name(rng)
    if kind < 0.85:
        return "%s(%d, %d:%d)" % (name(rng), rng.randint(1, 9), rng.randint(1, 4), rng.randint(5, 9))
    return "[%s, %s; %s %s]" % tuple(number(rng) for _ in range(4))


def expression(rng):
    """An arithmetic expression of one to four operands."""
    out = operand(rng)
    for _ in range(rng.randrange(4)):
        out += " " + rng.choice(["+", "-", "*", ".*", "./", "/"]) + " " + operand(rng)
    if rng.random() < 0.2:
        out = "(" + out + ")'"
    return out


def text(rng, count):
    """A few words of text."""
    return " ".join(rng.choice(WORDS) for _ in range(count))


def string_literal(rng):
    """A one-line string literal, sometimes with escape sequences."""
    words = [rng.choice(WORDS) for _ in range(rng.randint(1, 6))]
    if rng.random() < 0.3:
        words.insert(rng.randrange(len(words) + 1), rng.choice(ESCAPES))
    return '"' + " ".join(words) + '"'


def chunk(rng, room):
    """A group of at most `room` lines (without line ends) of one kind."""
    kind = rng.random()
    indent = rng.choice(INDENTS)
    if kind < 0.15:
        return [indent + "// " + text(rng, rng.randint(1, 8))]
    if kind < 0.22:
        span = min(room, rng.randint(1, 4))
        if span == 1:
            return [indent + "/* " + text(rng, rng.randint(1, 5)) + " */"]
        body = ["   " + text(rng, rng.randint(1, 6)) for _ in range(span - 2)]
        return [indent + "/* " + text(rng, 3)] + body + ["   " + text(rng, 2) + " */"]
    if kind < 0.42:
        return [indent + name(rng) + " = " + expression(rng) + ";"]
    if kind < 0.62:
        line = indent + dotted_name(rng) + " = " + expression(rng) + ";"
        if rng.random() < 0.2:
            line += " // " + text(rng, 3)
        return [line]
    if kind < 0.76:
        return [indent + name(rng) + " = " + number(rng) + ";"]
    if kind < 0.84:
        return [indent + "print(" + name(rng) + ");"]
    if kind < 0.97 or room < 2:
        return [indent + name(rng) + " = " + string_literal(rng) + ";"]
    # A string literal that spans two lines.
    return [indent + name(rng) + ' = "' + text(rng, 3), text(rng, 2) + '";']


def generate(lines, seed):
    """The script text: exactly `lines` lines, each ending in a line feed."""
    rng = random.Random(seed)
    out = []
    while len(out) < lines:
        out.extend(chunk(rng, lines - len(out)))
    return "".join(line + "\n" for line in out)


def main():
    parser = argparse.ArgumentParser(description=__doc__.splitlines()[0])
    parser.add_argument("output", help="file to write")
    parser.add_argument("--lines", type=int, default=20000, help="number of lines (default 20000)")
    parser.add_argument("--seed", type=int, default=DEFAULT_SEED, help="random seed")
    args = parser.parse_args()
    if args.lines < 1:
        parser.error("--lines must be at least 1")
    with open(args.output, "w", encoding="utf-8", newline="\n") as f:
        f.write(generate(args.lines, args.seed))


if __name__ == "__main__":
    main()

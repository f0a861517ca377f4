"""The small faults that scripts/mutate.py builds into a line of C++, each with a switch that chooses it at run time.

It reads one line at a time, as clang-format lays lines out: conditions, "return", declarations with a value, and whole
statements. Operators, numbers, true and false are changed, conditions are negated or made constant, statements are
dropped. A change may fail to compile; the caller drops it then."""
import random, re

SWITCH = "\x01"  # becomes kv_mutant(ID) when the mutant gets its id
OPERATORS = {"==": "!=", "!=": "==", "<": "<=", "<=": "<", ">": ">=", ">=": ">", "&&": "||", "||": "&&", "+": "-",
             "-": "+", "*": "+", "/": "*", "%": "/", "|": "&", "&": "|", "true": "false", "false": "true"}
CHANGEABLE = re.compile(r"(?<= )(==|!=|<=|>=|<|>|&&|\|\||[-+*/%|&])(?= )|(?<![\w.'\"])\d+(?![\w.'\"])|\b(true|false)\b")
# An assignment, a step, a stored value, an exception, or a call; its brackets are empty.
STATEMENT = re.compile(r"[\w:*>(\[.\])-]+ (?:[-+*/|&^]|<<|>>)?= |(\+\+|--)|[\w.]+ (<<|>>) |(throw|delete|delete\[\]) "
                       r"|[\w:<>.\[\]()*-]+\(\)[^\s;]*$")
DECLARATION = re.compile(r"(?!static|using|extern|inline|thread_local)(?:const )?[\w:]+(?:<[\w:, *]+>)?\*? \w+ = "
                         r"([^[{].*)$")
KEYWORDS = re.compile(r"(return|break|continue|using|const|auto|static|case|default|typedef|friend|public|private"
                      r"|protected|goto|if|for|while|do|switch|else|namespace|template|enum|struct|class|constexpr"
                      r"|static_assert|co_\w+)\b")


def masked(line):
    """The line with the text of its literals and its comment blanked, at the same positions."""
    line = re.sub(r'"(?:\\.|[^"\\])*"|\'(?:\\.|[^\'\\])\'', lambda m: '"' + "_" * (len(m[0]) - 2) + '"', line)
    return re.sub(r"/\*.*?\*/|//.*$", lambda m: " " * len(m[0]), line)


def closing(text, start):
    """Position of the bracket that closes the one at start, -1 if it is on another line."""
    depth = 0
    for i in range(start, len(text)):
        depth += (text[i] in "([{") - (text[i] in ")]}")
        if depth == 0:
            return i
    return -1


def flat(text):
    """The text without the contents of its brackets."""
    out, depth = "", 0
    for c in text:
        depth -= c in ")]}"
        out += c if depth <= 0 else ""
        depth += c in "([{"
    return out


def changed(expression, condition=False):
    """Small changes of an expression, each a whole expression again."""
    mask, out = masked(expression), []
    for m in CHANGEABLE.finditer(mask):
        word = m[0]
        new = OPERATORS.get(word) or str(int(word) + 1)
        out.append(expression[:m.start()] + new + expression[m.end():])
        if word.isdigit() and int(word) > 0:
            out.append(expression[:m.start()] + str(int(word) - 1) + expression[m.end():])
    if condition and (len(out) < 2 or random.random() < 0.3):
        out += [f"!({expression})", "true", "false"]
    return out


def conditions(line, mask, at, out):
    """Adds the mutants of a statement's if, while and for. Returns the position after them, -1 for the next line."""
    while True:
        word = re.compile(r"(?:\} )?(?:else )?(if|while|for|else|do) ?(\()?").match(mask, at)
        if not word:
            return at
        if not word[2]:  # else, do
            at = word.end()
            continue
        start, stop = word.end(), closing(mask, word.end() - 1)
        if stop < 0:
            return -1
        at = stop + 2
        if word[1] == "for":
            ends = [start + m.start() for m in re.finditer(";", mask[start:stop])]
            start, stop = (ends[0] + 1, ends[1]) if len(ends) == 2 else (stop, stop)
        text = line[start:stop]
        if text.strip() and not re.search(r"(?<![=!<>])=(?!=)|;|,(?![^(\[{]*[)\]}])", masked(text)):
            for new in changed(text, condition=word[1] != "for"):
                switched = f"{SWITCH} ? bool({new}) : bool({text})"
                out.append((line[:start] + new + line[stop:], line[:start] + switched + line[stop:]))


def statement(head, text, code):
    """Mutants of a statement without its semicolon; code is its mask, head is the line before it."""
    if code.startswith("return "):
        text = text[7:]
        news = changed(text, bool(re.search(r" (==|!=|<|>|<=|>=|&&|\|\|) |^!", flat(masked(text)))))
        if not news and "{" not in text:
            news = ["{}"]
        switched = "{{ if (" + SWITCH + ") return {}; else return {}; }}"
        return [(f"{head}return {new};", head + switched.format(new, text)) for new in news]
    declared = DECLARATION.match(code)
    if declared:
        name, text = head + text[:declared.start(1)], text[declared.start(1):]
        return [(f"{name}{new};", f"{name}{SWITCH} ? ({new}) : ({text});") for new in changed(text)]
    if KEYWORDS.match(code) or not STATEMENT.match(flat(code)):
        return []
    switched = "{{ if (" + SWITCH + ") {{ {}; }} else {{ {}; }} }}"
    return [(head + (new + ";" if new else "/* dropped */;"), head + switched.format(new, text))
            for new in changed(text) + ["", ""]]


def variants(line, before, header):
    """(mutated line, the line with a switch) for each mutant of a line of code. before: the code before it."""
    mask, out = masked(line).rstrip(), []
    indent = len(line) - len(line.lstrip())
    if indent < 2 or mask.endswith("\\") or "constexpr" in mask or "consteval" in mask:
        return out
    inline = re.match(r"(\s+[^=]*\) (?:const )?(?:noexcept )?(?:override )?)\{ return (.+); \}$", mask)
    if inline:
        head, text = inline[1], line[inline.start(2):inline.end(2)]
        return [(f"{head}{{ return {new}; }}", f"{head}{{ if ({SWITCH}) return {new}; else return {text}; }}")
                for new in changed(text, bool(re.match(r"\s+(static )?bool\b", line)))]
    if header and indent < 4 or not (before == "" or before[-1] in ";{}:)" or before in ("else", "do")):
        return out
    at = conditions(line, mask, indent, out)
    label = re.compile(r"(?:case [\w:']+|default): ").match(mask, at) if at >= 0 else None
    at = label.end() if label else at
    code = mask[at:-1]
    if at < 0 or not mask.endswith(";") or ";" in code or closing("(" + code + ")", 0) != len(code) + 1:
        return out
    return out + statement(line[:at], line[at:at + len(code)], code)

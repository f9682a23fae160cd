"""The mutants of a Python file, found in its syntax tree."""

import ast
import io
import keyword
import tokenize
from collections.abc import Iterator

Edit = tuple[int, int, str]  # Replace the text from `start` to `end`.

TOKENS = {"==": "!=", "!=": "==", "<": "<=", ">": ">=", "<=": "<", ">=": ">", "+": "-", "-": "+", "*": "/", "/": "*", "|": "&",
          "&": "|", "+=": "-=", "-=": "+=", "and": "or", "or": "and", "True": "False", "False": "True", "continue": "break",
          "break": "continue", "in": "not in"}
SIMPLE = (ast.Expr, ast.Assign, ast.AugAssign, ast.Raise, ast.Delete)


def edits_of(text: str) -> Iterator[Edit]:
    lines = text.splitlines(keepends=True)
    starts = [0]
    for line in lines:
        starts.append(starts[-1] + len(line))

    def place(line: int, column: int) -> int:
        return starts[line - 1] + column

    def span(node: ast.expr | ast.stmt) -> tuple[int, int]:
        # The columns of the tree count bytes.
        def offset(line: int, column: int) -> int:
            return place(line, len(lines[line - 1].encode()[:column].decode()))
        return offset(node.lineno, node.col_offset), offset(node.end_lineno or 0, node.end_col_offset or 0)

    tree = ast.parse(text)
    ignored = set(ignored_spans(tree, span))
    for node in ast.walk(tree):
        if isinstance(node, ast.stmt | ast.expr) and span(node) not in ignored:
            yield from edits_of_node(text, node, *span(node))
    for token in tokenize.generate_tokens(io.StringIO(text).readline):
        start, end = place(*token.start), place(*token.end)
        if any(first <= start and end <= last for first, last in ignored):
            continue
        if token.string in TOKENS and not is_part_of_for_or_signature(token):
            yield start, end, TOKENS[token.string]
        elif token.type == tokenize.NUMBER:
            yield start, end, f"({token.string} + 1)"
        elif token.type == tokenize.STRING:
            yield start, end, '""' if token.string.strip("rbfRBF") not in ('""', "''") else '"x"'


def ignored_spans(tree: ast.Module, span) -> Iterator[tuple[int, int]]:  # type: ignore[no-untyped-def]
    """Yields docstrings, imports, annotations and everything else whose change no test could notice."""
    for node in ast.walk(tree):
        if isinstance(node, ast.Import | ast.ImportFrom):
            yield span(node)
        if isinstance(node, ast.Expr) and isinstance(node.value, ast.Constant):
            yield span(node)
            yield span(node.value)
        for annotation in (getattr(node, "annotation", None), getattr(node, "returns", None)):
            if annotation is not None:
                yield span(annotation)


def is_part_of_for_or_signature(token: tokenize.TokenInfo) -> bool:
    """Returns whether the token is the `in` of a loop, or the `*` or `/` of a signature or call."""
    before = token.line[:token.start[1]].rstrip()
    if token.string == "in":
        return "for" in before.replace("(", " ").replace("[", " ").split() or before.endswith(" not")
    unary = before[-1:] in "([{,=:" or before.split()[-1:] and keyword.iskeyword(before.split()[-1])
    return token.string in "*/-+" and (not before or bool(unary) or before.endswith("*"))


def edits_of_node(text: str, node: ast.AST, start: int, end: int) -> Iterator[Edit]:
    if isinstance(node, ast.If | ast.While | ast.IfExp):
        first, last = text.index(ast.get_source_segment(text, node.test) or "", start), 0
        last = first + len(ast.get_source_segment(text, node.test) or "")
        yield first, last, "False" if isinstance(node, ast.While) else f"(not ({text[first:last]}))"
    elif isinstance(node, ast.UnaryOp) and isinstance(node.op, ast.Not):
        yield start, start + len("not"), ""
    elif isinstance(node, ast.Return) and node.value is not None:
        yield start, end, "return None"
    elif isinstance(node, SIMPLE):
        yield start, end, "pass"

"""Finds what can be changed in a C++ source, by clang's own view of it."""

import collections
import dataclasses
import re
import shlex

from clang.cindex import CursorKind as Kind
from clang.cindex import Index, TranslationUnit, TypeKind

RELATIONAL = {
    "==": ["!="], "!=": ["=="],
    "<": ["<=", ">="], "<=": ["<", ">"], ">": [">=", "<="], ">=": [">", "<"],
}  # fmt: skip
ARITHMETIC = {
    "+": "-", "-": "+", "*": "/", "/": "*", "%": "*",
    "&": "|", "|": "&", "<<": ">>", ">>": "<<", "^": "&",
}  # fmt: skip
COMPOUND = {"+=": "-=", "-=": "+=", "*=": "/=", "/=": "*=", "&=": "|=", "|=": "&="}
COMMENT = re.compile(r"//[^\n]*|/\*.*?\*/", re.DOTALL)
OPERATOR = re.compile(r"<<=?|>>=?|&&|\|\||[-+*/%&|^<>=!]=?|,")
TEXT_TYPE = re.compile(r"(const )?std::(basic_)?string(_view)?\b")
# Their arguments are evaluated by the compiler.
COMPILE_TIME_CALLS = {"catalogued"}
CONSTANT_RECORDS = {"CatalogueText", "OptionName"}


@dataclasses.dataclass
class Mutant:
    """One change: of the expression between two offsets, or the omission of that statement."""

    path: str
    line: int
    start: int
    end: int
    original: str
    changed: str | None  # None: the statement is left out
    is_condition: bool = False  # what it changes may be of any type that can be a condition
    code: str = ""  # the line
    occurrence: int = 1  # which one it is of those with the same change in such a line
    number: int = 0

    @property
    def key(self):
        """Names the mutant while lines above it come and go."""
        return self.path, self.code, self.change, self.occurrence

    @property
    def change(self):
        """The change in words, the same in every run."""
        if self.changed is None:
            return f"without {self.original}"
        if other := re.fullmatch(r"mutation::other\((.*)\)", self.changed):
            return f"other than {other[1]}"
        if moved := re.fullmatch(r"mutation::moved\((.*), (-?1)\)", self.changed):
            return f"{moved[1]} moved by {moved[2]}"
        return f"{self.original} -> {self.changed}"


def parse(path, command):
    """The view of a source that its compile command gives."""
    kinds = ("-I", "-D", "-U", "-std", "-isystem", "/")
    flags = [
        word for word in shlex.split(command)
        if word.startswith(kinds) and not word.endswith((".cpp", ".o", "ccache", "c++", "g++"))
    ]  # fmt: skip
    options = TranslationUnit.PARSE_DETAILED_PROCESSING_RECORD
    unit = Index.create().parse(str(path), flags, options=options)
    errors = [each for each in unit.diagnostics if each.severity >= each.Error]
    if errors:
        raise SystemExit(f"clang cannot read {path}: {errors[0]}")
    return unit


def text_outside(code):
    """Code without what stands in parentheses, brackets and texts."""
    code = re.sub(r'"(?:[^"\\]|\\.)*"|\'(?:[^\'\\]|\\.)*\'', "0", code)
    while (shorter := re.sub(r"\([^()]*\)|\[[^\[\]]*\]|\{[^{}]*\}", "", code)) != code:
        code = shorter
    return code


def grouped(operand):
    """An operand that keeps its meaning beside an operator of any rank."""
    return f"({operand})" if " " in text_outside(operand) else operand


class Finder:
    """Collects the mutants of one source, and the `constexpr` words in the way of some."""

    def __init__(self, unit, path, label):
        self.mutants = []
        self.constexpr_words = []  # (offset of the word, end of the declaration)
        self._label = label
        self._source = path.read_bytes()
        self._path = str(path)
        self._macros = []
        own = [each for each in unit.cursor.get_children() if self._is_here(each)]
        for each in own:
            if each.kind == Kind.MACRO_INSTANTIATION:
                self._macros.append(self._range(each))
        for each in own:
            if not each.kind.is_preprocessing():
                self._visit(each, None)
        self._keep_nested()
        self._name()

    def _is_here(self, node):
        return node.location.file is not None and node.location.file.name == self._path

    @staticmethod
    def _range(node):
        return node.extent.start.offset, node.extent.end.offset

    def _text(self, start, end):
        """The code between two offsets on one line, without comments."""
        code = self._source[start:end].decode()
        return re.sub(r"\s*\n\s*", " ", COMMENT.sub("", code)).strip()

    def _of(self, node):
        return self._text(*self._range(node))

    def _add(self, node, changed, is_condition=False):
        start, end = self._range(node)
        line = self._source.count(b"\n", 0, start) + 1
        original = self._text(start, end)
        self.mutants.append(Mutant(self._label, line, start, end, original, changed, is_condition))

    def _cuts_macro(self, start, end):
        """Whether a range lies inside a macro's use, or holds a part of one."""
        return any(
            start < high and low < end and not (start <= low and high <= end)
            for low, high in self._macros
        )

    def _keep_nested(self):
        """Leaves out ranges that overlap an earlier one without lying in it or around it."""
        kept = []
        for each in self.mutants:
            crosses = any(
                each.start < other.start < each.end < other.end
                or other.start < each.start < other.end < each.end
                for other in kept
            )
            if not crosses:
                kept.append(each)
        seen = set()
        self.mutants = [
            each for each in kept
            if (key := (each.start, each.end, each.changed)) not in seen and not seen.add(key)
        ]  # fmt: skip

    def _name(self):
        lines = self._source.decode().split("\n")
        times = collections.Counter()
        for each in self.mutants:
            each.code = lines[each.line - 1].strip()
            times[each.code, each.change] += 1
            each.occurrence = times[each.code, each.change]

    def _visit(self, node, parent):
        start, end = self._range(node)
        if node.kind in (Kind.STATIC_ASSERT, Kind.ENUM_DECL, Kind.TYPE_REF) or start == end:
            return
        children = list(node.get_children())
        if self._is_constant_expression(node, parent):
            return
        if node.kind == Kind.VAR_DECL:
            name = node.location.offset
            children = [each for each in children if each.extent.start.offset > name]
        elif node.kind == Kind.CASE_STMT:
            children = children[1:]
        if not self._cuts_macro(start, end):
            self._mutate(node, parent, children)
        if (start, end) in self._macros:
            return
        for child in children:
            self._visit(child, node)

    def _is_constant_expression(self, node, parent):
        """Whether the compiler has to know the value; notes the word constexpr where it can go."""
        if node.kind == Kind.CALL_EXPR and node.spelling in COMPILE_TIME_CALLS:
            if parent.kind != Kind.CALL_EXPR:
                self._add(node, f"mutation::other({self._of(node)})")
            return True
        if node.kind not in (Kind.VAR_DECL, Kind.FUNCTION_DECL, Kind.CXX_METHOD):
            return False
        start, end = self._range(node)
        head = self._source[start : node.location.offset].decode()
        word = re.search(r"\bconst(expr|eval)\b", head)
        if not word:
            return False
        if node.kind != Kind.VAR_DECL or not self._is_table(node):
            return True
        self.constexpr_words.append((start + word.start(), end))
        return False

    @staticmethod
    def _is_table(node):
        kind = node.type.get_canonical()
        if kind.kind == TypeKind.CONSTANTARRAY or kind.spelling.startswith("const std::array"):
            return True
        return kind.kind == TypeKind.RECORD and kind.spelling.split()[-1] not in CONSTANT_RECORDS

    def _mutate(self, node, parent, children):
        kind = node.kind
        is_statement = parent is not None and parent.kind in (
            Kind.COMPOUND_STMT, Kind.CASE_STMT, Kind.DEFAULT_STMT)  # fmt: skip
        if is_statement and (kind.is_expression() or kind in (Kind.BREAK_STMT, Kind.CONTINUE_STMT)):
            self._add(node, None)
        elif kind == Kind.IF_STMT:
            self._negate(self._condition(children))
        elif kind == Kind.WHILE_STMT or kind == Kind.CONDITIONAL_OPERATOR:
            self._negate(children[0])
        elif kind == Kind.RETURN_STMT and children:
            self._return(children[0])
        if self._range(node) in self._macros:
            self._constant(node)
        elif kind in (Kind.BINARY_OPERATOR, Kind.CALL_EXPR) and len(children) >= 2:
            self._operator(node, children)
        elif kind == Kind.COMPOUND_ASSIGNMENT_OPERATOR:
            self._replace(node, children, COMPOUND)
        elif kind == Kind.UNARY_OPERATOR:
            self._unary(node)
        elif kind.is_expression():
            self._constant(node)

    @staticmethod
    def _condition(children):
        """The condition among the parts of an if: what stands before its first block.

        None where the condition is a declaration.
        """
        before = None
        if any(each.kind == Kind.VAR_DECL for each in children):
            return None
        for each in children:
            if each.kind == Kind.COMPOUND_STMT:
                break
            before = each
        return before

    def _negate(self, node):
        while node is not None and node.kind in (Kind.UNEXPOSED_EXPR, Kind.PAREN_EXPR):
            inner = list(node.get_children())
            if len(inner) != 1 or self._range(inner[0]) != self._range(node):
                break
            node = inner[0]
        if node is None or not node.kind.is_expression() or self._cuts_macro(*self._range(node)):
            return
        if self._is_decision(node):
            return
        self._add(node, f"!{grouped(self._of(node))}", is_condition=True)

    def _is_decision(self, node):
        """Whether an expression is changed by its own operator anyway."""
        text = self._of(node)
        return text.startswith("!") or any(
            sign in text_outside(text).split() for sign in (*RELATIONAL, "&&", "||")
        )

    def _return(self, node):
        name = node.type.get_canonical()
        plain = self._unwrapped(node)
        if plain.kind in (
            Kind.STRING_LITERAL, Kind.INTEGER_LITERAL, Kind.CXX_BOOL_LITERAL_EXPR,
            Kind.CONDITIONAL_OPERATOR, Kind.CXX_NULL_PTR_LITERAL_EXPR, Kind.INIT_LIST_EXPR,
        ) or self._is_decision(node):  # fmt: skip
            return
        if self._constant_name(plain) or self._cuts_macro(*self._range(node)):
            return
        scalar = {TypeKind.BOOL, TypeKind.INT, TypeKind.UINT, TypeKind.LONG, TypeKind.ULONG,
                  TypeKind.CHAR_S, TypeKind.ENUM, TypeKind.POINTER}  # fmt: skip
        if self._of(node).startswith(("{", '"')):
            return
        if name.kind in scalar or TEXT_TYPE.search(node.type.spelling + name.spelling):
            self._add(node, f"mutation::other({self._of(node)})")

    def _unwrapped(self, node):
        while True:
            inner = list(node.get_children())
            if len(inner) != 1 or self._range(inner[0]) != self._range(node):
                return node
            node = inner[0]

    def _sign(self, operands):
        between = self._text(operands[0].extent.end.offset, operands[-1].extent.start.offset)
        found = OPERATOR.findall(between)
        return found[0] if found else ""

    def _operator(self, node, children):
        sign = self._sign(children)
        if node.kind == Kind.CALL_EXPR and not (
            node.spelling.startswith("operator") and sign in RELATIONAL
        ):
            return
        left, right = self._of(children[0]), self._of(children[-1])
        end = children[-1].extent.end.offset
        if end != self._range(node)[1]:
            return
        for each in RELATIONAL.get(sign, []):
            self._add(node, f"{left} {each} {right}")
        if sign in ("&&", "||"):
            self._add(node, f"{grouped(left)} {'||' if sign == '&&' else '&&'} {grouped(right)}")
            self._add(node, self._as_condition(children[0]))
            self._add(node, self._as_condition(children[-1]))
        elif sign in ARITHMETIC:
            self._add(node, f"{grouped(left)} {ARITHMETIC[sign]} {grouped(right)}")

    def _as_condition(self, node):
        plain = self._unwrapped(node).type.get_canonical().kind == TypeKind.BOOL
        return self._of(node) if plain else f"bool({self._of(node)})"

    def _replace(self, node, children, table):
        sign = self._sign(children)
        if sign in table:
            left, right = self._of(children[0]), self._of(children[-1])
            self._add(node, f"{left} {table[sign]} {right}")

    def _unary(self, node):
        text = self._of(node)
        if text.startswith(("++", "--")):
            self._add(node, ("--" if text[0] == "+" else "++") + text[2:])
        elif text.endswith(("++", "--")) and text[0] != "*":
            self._add(node, text[:-2] + ("--" if text[-1] == "+" else "++"))
        elif text[0] == "-" or text[0] == "!" and text[1:2] != "=":
            self._add(node, text[1:] if text[0] == "-" else f"bool({text[1:]})")

    def _constant(self, node):
        text = self._of(node)
        kind = node.kind
        if kind == Kind.INTEGER_LITERAL and text[0].isalnum():
            self._add(node, f"{text} + 1")
            if text[0].isdigit() and int(text.rstrip("uUlL"), 0) != 0:
                self._add(node, f"{text} - 1")
        elif kind == Kind.CXX_BOOL_LITERAL_EXPR:
            self._add(node, "false" if text == "true" else "true")
        elif kind == Kind.CHARACTER_LITERAL:
            self._add(node, "'m'" if text == r"'\0'" else f"static_cast<char>({text} + 1)")
        elif kind == Kind.STRING_LITERAL:
            self._add(node, '"mutant"' if text == '""' else '""')
        elif self._constant_name(node):
            self._named(node, text)

    def _constant_name(self, node):
        """What a name stands for, when that is a constant."""
        if node.kind != Kind.DECL_REF_EXPR:
            return None
        target = node.referenced
        if target is None or target.kind == Kind.ENUM_CONSTANT_DECL:
            return target
        if target.kind != Kind.VAR_DECL:
            return None
        head = " ".join(token.spelling for token in target.get_tokens())
        return target if "constexpr" in head.split(target.spelling)[0].split() else None

    def _named(self, node, text):
        kind = node.type.get_canonical()
        if kind.kind == TypeKind.RECORD and kind.spelling.split()[-1] in CONSTANT_RECORDS:
            self._add(node, f"mutation::other({text})")
        elif kind.kind == TypeKind.POINTER:
            self._add(node, f"mutation::other({text})")
        elif kind.kind in (TypeKind.ENUM, TypeKind.INT, TypeKind.UINT, TypeKind.LONG,
                           TypeKind.ULONG):  # fmt: skip
            self._add(node, f"mutation::moved({text}, 1)")
            if "::" not in text and kind.kind != TypeKind.ENUM:
                self._add(node, f"mutation::moved({text}, -1)")

"""Makes what the package says of the mapping functions, of ORXExUtilities.h and ORXExportTable.h.

    Generate.py documentation   a header with the names of the parameters and the docstrings
    Generate.py stub TEMPLATE   the type stub: the template with the functions in it
"""

import importlib.machinery
import importlib.util
import json
import re
import sys
from pathlib import Path

ROOT = Path(__file__).resolve().parent.parent


def reference():
    """The script scripts/reference as a module, which reads the header."""
    loader = importlib.machinery.SourceFileLoader("reference", str(ROOT / "scripts/reference"))
    module = importlib.util.module_from_spec(importlib.util.spec_from_loader("reference", loader))
    sys.modules["reference"] = module
    sys.dont_write_bytecode = True
    loader.exec_module(module)
    return module


def read_table():
    """The kinds of the arguments and the result of each function, in the order of the table."""
    text = (ROOT / "DatabaseAccess/ORXExUtilities.m/ORXExportTable.h").read_text()
    rows = re.findall(r'Export\{"(\w+)",\s*\{([^}]*)\},\s*([\w| ]+?),\s*"', text)
    return {
        name: (re.findall(r"\w+", arguments), result.split(" | "))
        for name, arguments, result in rows
    }


ARGUMENTS = {
    "String": "str | None",
    "Integer": "int | None",
    "Real": "float | None",
    "Instance": "Instance | None",
    "Aggregate": "Sequence[Value] | None",
    "Select": "Value",
    "Any": "Value",
    "RealList": "list[float]",
    "Model": "Model",
}
RESULTS = {
    "String": "str",
    "Integer": "int",
    "Real": "float",
    "Logical": "bool",
    "Instance": "Instance",
    "Aggregate": "list[float]",
    "Unset": "None",
    "Any": "Any",
}


def parameters(declaration):
    return [item for item in declaration.items if item not in ("default", "reads")]


def python_name(name):
    """A parameter, renamed if it is a keyword of Python."""
    return f"{name}_" if name in ("from", "set", "is") else name


def docstring(declaration):
    """The signature in the form for `inspect`, the description of the function and its arguments."""
    names = [python_name(name) for name in parameters(declaration)]
    lines = [f"{declaration.name}({', '.join(names)})", "--", ""]
    for paragraph in declaration.text:
        lines += [paragraph, ""]
    lines += [f"{python_name(item)}: {text}" for item, text in declaration.items.items()]
    return "\n".join(lines)


def documentation():
    table = read_table()
    declarations = {declaration.name: declaration for declaration in reference().read_header()[1]}
    if set(table) != set(declarations):
        sys.exit("ORXExUtilities.h and ORXExportTable.h name different functions")
    print("// What the package says of the functions, in the order of the export table. Made by")
    print("// Python/Generate.py.\n")
    print("struct Documentation {\n    const char* name;\n    const char* text;")
    print("    const char* parameters[3];\n    const char* what[3];  // for messages\n};\n")
    print("inline constexpr Documentation kDocumentation[] = {")
    for name in table:
        names = [python_name(parameter) for parameter in parameters(declarations[name])]
        known = ", ".join(json.dumps(parameter) for parameter in names)
        what = ", ".join(json.dumps(f"argument '{parameter}'") for parameter in names)
        text = json.dumps(docstring(declarations[name]))
        print(f"    {{{json.dumps(name)}, {text},\n     {{{known}}}, {{{what}}}}},")
    print("};")


def stub(template):
    table = read_table()
    functions = []
    for declaration in reference().read_header()[1]:
        kinds, result = table[declaration.name]
        names = [python_name(name) for name in parameters(declaration)]
        arguments = [f"{name}: {ARGUMENTS[kind]}" for name, kind in zip(names, kinds, strict=True)]
        if result == ["Nothing"]:
            filled = ARGUMENTS[kinds[-1]]
            if kinds[-1] == "Aggregate":
                filled = "list[Any] | None"
            arguments[-1] = f"{names[-1]}: {filled}"
            returned = filled
        else:
            returned = " | ".join(RESULTS[kind] for kind in result)
        functions.append(f"def {declaration.name}({', '.join(arguments)}) -> {returned}: ...")
    text = Path(template).read_text()
    print(text.replace("# FUNCTIONS\n", "\n".join(functions) + "\n"), end="")


match sys.argv[1:]:
    case ["documentation"]:
        documentation()
    case ["stub", template]:
        stub(template)
    case _:
        sys.exit(__doc__)

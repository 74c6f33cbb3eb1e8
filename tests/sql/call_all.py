"""Makes calls that a file in JSON lists and prints the results, one in a line, as `orx --json` shows
values."""

import json
import sys

import orxexutilities as orx


def shown(value, names):
    if value is orx.UNKNOWN:
        return "UNKNOWN"
    if isinstance(value, orx.Instance):
        name = names[value.model]
        return {"instance": (f"@{name}" if name else "") + f"#{value.number}", "type": value.entity}
    if isinstance(value, orx.Enum):
        return {"enumeration": value.name}
    if isinstance(value, orx.Binary):
        return {"binary": value.digits}
    if isinstance(value, orx.Typed):
        return shown(value.value, names)
    if isinstance(value, list):
        return [shown(member, names) for member in value]
    return value


def main():
    with open(sys.argv[1], encoding="utf-8") as file:
        work = json.load(file)
    models = {name: orx.read(path, schemas=work["schemas"]) for name, path in work["models"]}
    names = {model: "" if i == 0 else name for i, (name, model) in enumerate(models.items())}

    def argument(given):
        if given is None:
            return None
        (kind, value), = given.items()
        if kind == "instance":
            return models[value[0]][value[1]]
        if kind == "attribute":
            return models[value[0]][value[1]][value[2]]
        return models[value] if kind == "model" else value

    for name, arguments in work["calls"]:
        result = getattr(orx, name)(*map(argument, arguments))
        print(json.dumps(shown(result, names)))


main()

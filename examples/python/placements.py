#!/usr/bin/python3
"""Where every part of an assembly stands, worked out with numpy and drawn with matplotlib.

    placements.py FILE PICTURE

GetAbsPlacement gives the place of a component in its parent: the three columns of a rotation, then a
translation. Multiplied through from the top of the assembly downwards they give absolute places.
"""

import sys
from collections import defaultdict

import numpy
import orxexutilities as orx

LINK = "NEXT_ASSEMBLY_USAGE_OCCURRENCE"


def matrices(placements: numpy.ndarray) -> numpy.ndarray:
    """Rows of twelve reals as matrices of 4 by 4."""
    result = numpy.tile(numpy.eye(4), (len(placements), 1, 1))
    result[:, :3, :] = placements.reshape(-1, 4, 3).transpose(0, 2, 1)
    return result


def absolute_placements(model: orx.Model) -> list[tuple[str, numpy.ndarray]]:
    """The path of each occurrence, and its place in the assembly as a matrix of 4 by 4."""
    links = model[LINK]
    places = dict(zip(links, matrices(orx.placements(links))))
    components = defaultdict(list)
    for link in links:
        components[link.RELATING_PRODUCT_DEFINITION].append(link)
    placed = {link.RELATED_PRODUCT_DEFINITION for link in links}

    result = []

    def visit(definition, path, place, above):
        if definition in above:
            sys.exit(f"{definition} is a component of itself")
        for link in components[definition]:
            name = f"{path}/{link.ID}" if path else link.ID
            its = place @ places[link]
            result.append((name, its))
            visit(link.RELATED_PRODUCT_DEFINITION, name, its, above | {definition})

    for root in list(components):
        if root not in placed:
            visit(root, "", numpy.eye(4), frozenset())
    return result


def draw(placements: list[tuple[str, numpy.ndarray]], picture: str) -> None:
    import matplotlib

    matplotlib.use("Agg")
    from matplotlib import pyplot

    figure = pyplot.figure(figsize=(8, 8))
    axes = figure.add_subplot(projection="3d")
    origins = numpy.array([place[:3, 3] for _, place in placements]).reshape(-1, 3)
    size = max(numpy.ptp(origins, axis=0).max(initial=0.0), 1.0) / 10
    for (name, place), origin in zip(placements, origins):
        for direction, colour in zip(place[:3, :3].T, ("tab:red", "tab:green", "tab:blue")):
            axes.plot(*numpy.stack([origin, origin + size * direction]).T, color=colour)
        axes.text(*origin, name)
    axes.set_xlabel("x")
    axes.set_ylabel("y")
    axes.set_zlabel("z")
    figure.savefig(picture)
    pyplot.close(figure)


def main() -> None:
    if len(sys.argv) != 3:
        sys.exit(__doc__)
    placements = absolute_placements(orx.read(sys.argv[1]))
    for name, place in placements:
        print(name, *(f"{value:g}" for value in place[:3, 3]))
    draw(placements, sys.argv[2])


if __name__ == "__main__":
    main()

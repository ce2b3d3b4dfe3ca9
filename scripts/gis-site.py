#!/usr/bin/env python3
"""Writes data/site-wgs84.geojson: a small building site as a GIS exports it, in WGS 84
longitude and latitude: two streets and a footpath, the parcels on both sides with their
numbers, a few buildings, the survey control points and the trees, each feature with an
OGR style string in its "style" field. Laid out in metres on a local grid, then carried
to degrees around 46.05 N 14.505 E (UTM zone 33 north)."""
import json
import math
import sys

LON0, LAT0 = 14.5050, 46.0500
M_PER_DEG_LAT = 111_132.954 - 559.822 * math.cos(2 * math.radians(LAT0))
M_PER_DEG_LON = 111_412.84 * math.cos(math.radians(LAT0))


def deg(x, y):
    return [round(LON0 + x / M_PER_DEG_LON, 8), round(LAT0 + y / M_PER_DEG_LAT, 8)]


def road_y(x):
    """The main road's centre line: rises gently from west to east."""
    pts = [(0, 120), (120, 130), (250, 150), (400, 185)]
    for (x0, y0), (x1, y1) in zip(pts, pts[1:]):
        if x0 <= x <= x1:
            return y0 + (y1 - y0) * (x - x0) / (x1 - x0)
    return pts[-1][1]


features = []


def add(kind, coords, style, name=None, **props):
    geometry = {"type": kind, "coordinates": coords}
    properties = {"style": style, **props}
    if name is not None:
        properties["name"] = name
    features.append({"type": "Feature", "properties": properties, "geometry": geometry})


def line(points):
    return [deg(x, y) for x, y in points]


def ring(points):
    return [line(points + [points[0]])]


# Streets and a footpath.
add("LineString", line([(0, 120), (120, 130), (250, 150), (400, 185)]), "PEN(c:#B03A2E,w:5px)", "Main Road")
add("LineString", line([(180, 143), (176, 80), (165, 0)]), "PEN(c:#CA6F1E,w:4px)", "Mill Lane")
add("LineString", line([(253, 151), (253, 230), (256, 290), (262, 300)]), "PEN(c:#7F8C8D,w:1px)")

# Parcels north and south of the main road, numbered as the land register does.
north = [(10, 85), (92, 165), (195, 250), (257, 330), (337, 395)]
south = [(10, 75), (82, 160), (190, 262), (269, 345)]
number = 1021
for x0, x1 in north:
    pts = [(x0, road_y(x0) + 12), (x1, road_y(x1) + 12), (x1, 285), (x0, 280)]
    add("Polygon", ring(pts), "PEN(c:#2874A6,w:1px)", f"{number}/{x0 % 7 + 1}")
    number += 1
for x0, x1 in south:
    pts = [(x0, 10), (x1, 14), (x1, road_y(x1) - 12), (x0, road_y(x0) - 12)]
    add("Polygon", ring(pts), "PEN(c:#2874A6,w:1px)", f"{number}/{x0 % 5 + 1}")
    number += 1

# Buildings near the street, some turned to it.
for cx, cy, w, h, turn in [(45, 160, 30, 18, 4), (125, 168, 36, 20, 6), (290, 190, 28, 24, 9), (40, 90, 26, 16, 3),
                           (120, 100, 40, 20, 5), (305, 130, 34, 18, 10)]:
    a = math.radians(turn)
    corners = [(-w / 2, -h / 2), (w / 2, -h / 2), (w / 2, h / 2), (-w / 2, h / 2)]
    pts = [(cx + x * math.cos(a) - y * math.sin(a), cy + x * math.sin(a) + y * math.cos(a)) for x, y in corners]
    add("Polygon", ring(pts), "PEN(c:#212F3D,w:2px)")

# Survey control points and trees.
for i, (x, y) in enumerate([(60, 125), (215, 147), (355, 175), (178, 40)], start=1):
    add("Point", deg(x, y), "SYMBOL(c:#1E8449)", f"CP{i}")
for x, y in [(20, 245), (70, 255), (150, 250), (230, 200), (320, 270), (360, 215), (30, 25), (140, 30), (220, 40),
             (330, 40)]:
    add("Point", deg(x, y), "SYMBOL(c:#52BE80)")

json.dump({"type": "FeatureCollection", "name": "site",
           "crs": {"type": "name", "properties": {"name": "urn:ogc:def:crs:OGC:1.3:CRS84"}},
           "features": features}, open(sys.argv[1], "w") if len(sys.argv) > 1 else sys.stdout, indent=1)

"""Places, turns and sizes as matrices: rows of a 4 x 4 matrix that is multiplied with columns from the right."""
import math

CHANNELS = ["%s.%s" % (field, axis) for field in ("translation", "rotation", "rotationOrientation", "scale")
            for axis in "XYZ"]
TOLERANCE = 1e-3


def product(a, b):
    return [[sum(a[i][k] * b[k][j] for k in range(4)) for j in range(4)] for i in range(4)]


def translation(x, y, z):
    return [[1, 0, 0, x], [0, 1, 0, y], [0, 0, 1, z], [0, 0, 0, 1]]


def scaling(x, y, z):
    return [[x, 0, 0, 0], [0, y, 0, 0], [0, 0, z, 0], [0, 0, 0, 1]]


def turn(axis, degrees):
    c, s = math.cos(math.radians(degrees)), math.sin(math.radians(degrees))
    i, j = (axis + 1) % 3, (axis + 2) % 3
    m = scaling(1, 1, 1)
    m[i][i], m[i][j], m[j][i], m[j][j] = c, -s, s, c
    return m


def from_euler(x, y, z):
    """Turned about x first, then y, then z."""
    return product(turn(2, z), product(turn(1, y), turn(0, x)))


def from_quaternion(x, y, z, w):
    n = math.sqrt(x * x + y * y + z * z + w * w)
    x, y, z, w = x / n, y / n, z / n, w / n
    return [[1 - 2 * (y * y + z * z), 2 * (x * y - z * w), 2 * (x * z + y * w), 0],
            [2 * (x * y + z * w), 1 - 2 * (x * x + z * z), 2 * (y * z - x * w), 0],
            [2 * (x * z - y * w), 2 * (y * z + x * w), 1 - 2 * (x * x + y * y), 0], [0, 0, 0, 1]]


def compose(place, rotation, size):
    return product(translation(*place), product(rotation, scaling(*size)))


def of_channels(values):
    """The matrix of an object from its values in the order of CHANNELS."""
    place, angles, orientation, size = (values[i:i + 3] for i in range(0, 12, 3))
    return compose(place, product(from_euler(*angles), from_euler(*orientation)), size)


def difference(a, b):
    """The largest difference of two matrices: of places against the size of the numbers, of columns against their
    length."""
    worst = 0.0
    for column in range(4):
        size = max(1.0, math.sqrt(sum(b[row][column] ** 2 for row in range(3))))
        worst = max(worst, max(abs(a[row][column] - b[row][column]) for row in range(3)) / size)
    return worst


def check(what, values, expected):
    """Compares an object's channel values with the matrix that a file asks for."""
    off = difference(of_channels(values), expected)
    assert off <= TOLERANCE, "%s is off by %.2g\n  the application has %s\n  the file says %s" % (
        what, off, [[round(v, 4) for v in row] for row in of_channels(values)[:3]],
        [[round(v, 4) for v in row] for row in expected[:3]])

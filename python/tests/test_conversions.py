"""Python values into host arrays and back: the class and size the library
sees, and what comes back out."""
import numpy as np
import pytest
import tw_host_values as host
import twfileio

# (value, class, size, complex) as a built-in sees it
SEEN = [
    (None, "double", (0, 0), False),
    (True, "logical", (1, 1), False),
    (np.bool_(False), "logical", (1, 1), False),
    (3, "double", (1, 1), False),
    (2.5, "double", (1, 1), False),
    (1 + 2j, "double", (1, 1), True),
    (np.int16(-4), "int16", (1, 1), False),
    (np.float32(0.5), "single", (1, 1), False),
    ("abc", "char", (1, 3), False),
    ("", "char", (0, 0), False),
    (b"\x00\xff", "uint8", (1, 2), False),
    ([1, "a"], "cell", (1, 2), False),
    ((), "cell", (1, 0), False),
    ({"a": 1, "b": "x"}, "struct", (1, 1), False),
    (np.arange(4.0), "double", (1, 4), False),
    (np.array(7, dtype=np.uint32), "uint32", (1, 1), False),
    (np.zeros((2, 3, 4), dtype=np.int64), "int64", (2, 3, 4), False),
    (np.zeros((2, 3), dtype=np.float16), "single", (2, 3), False),
    (np.ones((2, 2), dtype=np.complex64), "single", (2, 2), True),
    (np.array([["a", "b"], ["c", "d"]]), "char", (2, 2), False),
    (np.empty((2, 1), dtype=object), "cell", (2, 1), False),
]


@pytest.mark.parametrize("value,cls,size,is_complex", SEEN, ids=lambda v: repr(v)[:30])
def test_class_and_size_seen_by_the_library(value, cls, size, is_complex):
    assert host.describe(value) == (cls, size, is_complex)


NUMPY_ROUND_TRIPS = [
    (np.arange(12) % 5).astype(dt).reshape(3, 4)
    for dt in ("f8", "f4", "i1", "u1", "i2", "u2", "i4", "u4", "i8", "u8", "?")
] + [
    np.array([[1 + 2j, 3 - 4j]]),
    np.array([[1 + 2j], [3 - 4j]], dtype=np.complex64),
    np.arange(24.0).reshape(2, 3, 4),
    np.zeros((0, 3)),
    np.array([["a", "b", "c"], ["d", "e", "f"]]),
    np.array([2**63 + 11, 2**64 - 1], dtype=np.uint64).reshape(1, 2),
]


@pytest.mark.parametrize("value", NUMPY_ROUND_TRIPS, ids=lambda v: f"{v.dtype}{v.shape}")
def test_numpy_arrays_come_back_equal(value):
    back = host.echo(value)
    assert back.dtype == value.dtype
    assert back.shape == value.shape
    assert back.flags.f_contiguous
    np.testing.assert_array_equal(back, value)


@pytest.mark.parametrize("value,expected", [
    (None, np.zeros((0, 0))),
    (True, True),
    (7, 7.0),
    (2**53, 2.0**53),
    (-1.5, -1.5),
    (1 - 1j, 1 - 1j),
    ("text é 😀", "text é 😀"),
    ("", ""),
    ("\ud800", "\ud800"),
    ("\ufeffleading mark", "\ufeffleading mark"),
    ("\xff latin", "\xff latin"),
    ("\u03a9\u20ac", "\u03a9\u20ac"),
    ("\udc00\ud800 reversed", "\udc00\ud800 reversed"),
    ([1.0, "a", [True]], [1.0, "a", [True]]),
    ({"x": 1.0, "name": "n"}, {"x": 1.0, "name": "n"}),
    (b"ab", np.array([[97, 98]], dtype=np.uint8)),
])
def test_plain_values_come_back(value, expected):
    back = host.echo(value)
    if isinstance(expected, np.ndarray):
        assert back.dtype == expected.dtype
        np.testing.assert_array_equal(back, expected)
    else:
        assert back == expected
        assert type(back) is type(expected)


@pytest.mark.parametrize("scalar", [np.int8(-3), np.uint16(9), np.int64(-2**62 - 1),
                                    np.uint64(2**64 - 1), np.float32(0.1)])
def test_numpy_scalars_keep_their_class(scalar):
    back = host.echo(scalar)
    assert type(back) is type(scalar)
    assert back == scalar


# Every width of str Python keeps, pairs and lone surrogates, empty fields.
FIELDS = ["plain", "", "caf\u00e9", "\u03a9\u20ac", "\U0001F600pair", "\ufeffmark", "lone\ud800",
          "\udc00first", "", "x" * 300]


def test_string_columns_come_back_as_lists_of_str():
    # A reader's cell of char rows goes to Python without an array per field;
    # it must give the same as the cell made element by element.
    [column] = twfileio.textscan(",".join(FIELDS), "%s", "Delimiter", ",", "Whitespace", "")
    assert column == FIELDS
    assert all(type(s) is str for s in column)
    assert host.echo(FIELDS) == FIELDS
    # Merged columns are a matrix of cells: an object array of the same str.
    [both] = twfileio.textscan(",".join(FIELDS), "%s %q", "Delimiter", ",", "Whitespace", "",
                               "CollectOutput", True)
    assert both.shape == (len(FIELDS) // 2, 2)
    assert list(both[:, 0]) == FIELDS[0::2] and list(both[:, 1]) == FIELDS[1::2]


def test_cells_that_are_not_vectors_are_object_arrays():
    cells = np.empty((2, 2), dtype=object)
    cells[0, 0], cells[1, 0], cells[0, 1], cells[1, 1] = "a", 1.0, [2.0], {"k": "v"}
    back = host.echo(cells)
    assert back.shape == (2, 2) and back.dtype == object
    assert back[0, 0] == "a" and back[1, 0] == 1.0 and back[0, 1] == [2.0]
    assert back[1, 1] == {"k": "v"}
    # An empty slot is the empty value.
    empty = host.echo(np.empty((1, 3), dtype=object))
    assert [e.shape for e in empty] == [(0, 0)] * 3


def test_lists_of_structs_come_back_as_lists_of_dicts():
    assert host.echo([{"a": 1.0}, {"b": "x"}]) == [{"a": 1.0}, {"b": "x"}]


@pytest.mark.parametrize("value", [
    np.arange(10.0),
    np.asfortranarray(np.ones((30, 40))),
    np.arange(5, dtype=np.int16),
])
def test_direct_arguments_are_lent_without_a_copy(value):
    [(_, address)] = host.as_inputs(value)
    assert address == value.ctypes.data


@pytest.mark.parametrize("value", [
    np.ones((30, 40)),  # row-major
    np.arange(10.0)[::2],  # strided
    np.arange(10.0).astype(">f8"),  # foreign byte order
])
def test_arrays_numpy_must_convert_are_converted_once(value):
    [(seen, address)] = host.as_inputs(value)
    assert address != value.ctypes.data
    assert seen[1] == ((1,) + value.shape if value.ndim == 1 else value.shape)


@pytest.mark.parametrize("value,identifier", [
    (object(), "KORVAN:python:UnsupportedType"),
    (2**53 + 1, "KORVAN:python:IntegerNotExact"),
    (10**400, "KORVAN:python:IntegerNotExact"),
    (np.array(["2020-01-01"], dtype="M8[D]"), "KORVAN:python:UnsupportedDtype"),
    (np.zeros(2, dtype=np.longdouble), "KORVAN:python:UnsupportedDtype"),
    (np.array(["ab"]), "KORVAN:python:UnsupportedDtype"),
    (np.array(["😀"]), "KORVAN:python:CharNeedsTwoUnits"),
    ({1: "x"}, "KORVAN:python:FieldNameNotText"),
    ([1, object()], "KORVAN:python:UnsupportedType"),
])
def test_values_without_an_array_form_are_refused(value, identifier):
    with pytest.raises(twfileio.Error) as caught:
        host.describe(value)
    assert caught.value.identifier == identifier
    assert caught.value.message


def test_bool_bytes_other_than_0_and_1_become_true():
    flags = np.array([0, 1, 2, 255], dtype=np.uint8).view(np.bool_)
    np.testing.assert_array_equal(host.echo(flags), [[False, True, True, True]])
    [(seen, address)] = host.as_inputs(flags)
    assert seen == ("logical", (1, 4), False) and address != flags.ctypes.data


def test_a_list_that_holds_itself_is_refused():
    loop = [1.0]
    loop.append(loop)
    with pytest.raises(twfileio.Error) as caught:
        host.describe(loop)
    assert caught.value.identifier == "KORVAN:python:NestingTooDeep"
    deep = 1.0
    for _ in range(999):
        deep = [deep]
    assert host.describe(deep)[0] == "cell"


def test_a_refused_argument_leaves_lent_arrays_alone():
    data = np.arange(100.0)
    with pytest.raises(twfileio.Error):
        host.as_inputs(data, object())
    np.testing.assert_array_equal(data, np.arange(100.0))

"""Dates and categories, made by hand through the host API, in numpy's terms."""
import math

import numpy as np
import pytest
import tw_host_values as host
import twfileio

NAT = np.datetime64("NaT", "ns")


@pytest.mark.parametrize("high,low,expected", [
    (1609459200000.0, 0.0, "2021-01-01T00:00:00"),
    (1609459200123.0, 0.000456, "2021-01-01T00:00:00.123000456"),
    (1609459200123.5, -0.000001, "2021-01-01T00:00:00.123499999"),
    (-1.5, 0.0, "1969-12-31T23:59:59.998500000"),
    (0.0, 0.0, "1970-01-01"),
    (-9.2e12 + 1, 0.0, np.datetime64(-9199999999999, "ms")),
    (9.2e12 - 1, 0.75, np.datetime64(9199999999999750000, "ns")),
])
def test_dates_are_exact_to_the_nanosecond(high, low, expected):
    dates = host.datetime([high], [low], [1, 1])
    assert dates.dtype == np.dtype("M8[ns]")
    assert dates.shape == (1, 1)
    assert dates[0, 0] == np.datetime64(expected, "ns")


def test_shape_is_kept_in_column_major_order():
    highs = [86400000.0 * day for day in range(6)]
    dates = host.datetime(highs, [], [2, 3])
    assert dates.shape == (2, 3)
    days = (dates - np.datetime64("1970-01-01", "ns")) // np.timedelta64(1, "D")
    np.testing.assert_array_equal(days, np.arange(6).reshape((2, 3), order="F"))


def test_nat_and_missing_data_are_nat():
    dates = host.datetime([math.nan, 0.0], [0.0, 0.0], [1, 3])
    assert np.isnat(dates[0, 0]) and not np.isnat(dates[0, 1]) and np.isnat(dates[0, 2])


@pytest.mark.parametrize("high", [1e13, -1e13, math.inf, -math.inf, 9.3e12])
def test_dates_numpy_cannot_hold_are_an_error(high):
    with pytest.raises(twfileio.Error) as caught:
        host.datetime([high], [0.0], [1, 1])
    assert caught.value.identifier == "KORVAN:python:DatetimeOutOfRange"


@pytest.mark.parametrize("code_class", ["uint32", "double"])
def test_categories_come_as_pandas_style_codes(code_class):
    undefined = math.nan if code_class == "double" else 0
    codes, categories = host.categorical([1, 2, undefined, 3, 2], ["low", "mid", "high"], [1, 5],
                                         code_class=code_class)
    assert categories == ["low", "mid", "high"]
    assert codes.dtype == np.int8
    assert codes.shape == (1, 5)
    np.testing.assert_array_equal(codes, [[0, 1, -1, 2, 1]])


def test_codes_out_of_range_are_undefined_and_wide_category_lists_widen_codes():
    names = [f"c{i}" for i in range(300)]
    codes, categories = host.categorical([300, 301, 1.5, 1], names, [2, 2], code_class="double")
    assert len(categories) == 300
    assert codes.dtype == np.int16
    np.testing.assert_array_equal(codes, np.array([[299, -1], [-1, 0]]))


def test_pandas_takes_the_pair_as_it_is():
    pd = pytest.importorskip("pandas")
    codes, categories = host.categorical([2, 1, 0], ["x", "y"], [3, 1])
    made = pd.Categorical.from_codes(codes.ravel(), categories)
    assert made.isna().tolist() == [False, False, True]
    assert list(made[:2]) == ["y", "x"]

"""fread of files numpy wrote, against numpy.fromfile, and the ownership of
what fread gives back."""
import ctypes
import gc
import sys

import numpy as np
import pytest
import twfileio

# (precision, numpy dtype of the file, numpy dtype of the result)
PRECISIONS = [
    ("double", "<f8", "f8"),
    ("*single", "<f4", "f4"),
    ("single", "<f4", "f8"),
    ("*int8", "i1", "i1"),
    ("*uint16", "<u2", "u2"),
    ("int32", "<i4", "f8"),
    ("*int64", "<i8", "i8"),
    ("uint64=>uint64", "<u8", "u8"),
    ("int16=>double", "<i2", "f8"),
    ("*uint8", "u1", "u1"),
    ("uint8", "u1", "f8"),
]


def values_for(dtype, count, rng):
    dt = np.dtype(dtype)
    if dt.kind == "f":
        return rng.standard_normal(count).astype(dt)
    info = np.iinfo(dt)
    return rng.integers(info.min, info.max, count, dtype=dt, endpoint=True)


@pytest.mark.parametrize("precision,file_dtype,result_dtype", PRECISIONS)
def test_reads_what_numpy_wrote(tmp_path, opened, precision, file_dtype, result_dtype):
    path = tmp_path / "data.bin"
    written = values_for(file_dtype, 1000, np.random.default_rng(1))
    written.tofile(path)
    fid = opened("data.bin")
    data, count = twfileio.fread(fid, np.inf, precision, nargout=2)
    expected = np.fromfile(path, dtype=file_dtype)
    assert count == expected.size
    assert data.dtype == np.dtype(result_dtype)
    assert data.shape == (expected.size, 1)
    np.testing.assert_array_equal(data.ravel(), expected.astype(result_dtype))


def test_big_endian_file(tmp_path, opened):
    path = tmp_path / "be.bin"
    np.arange(-50.0, 50.0, 0.25).astype(">f8").tofile(path)
    data = twfileio.fread(opened("be.bin"), np.inf, "double", 0, "ieee-be")
    np.testing.assert_array_equal(data.ravel(), np.fromfile(path, dtype=">f8"))


def test_size_gives_a_column_major_matrix(tmp_path, opened):
    path = tmp_path / "m.bin"
    np.arange(12, dtype="<i4").tofile(path)
    data = twfileio.fread(opened("m.bin"), np.array([3.0, 4.0]), "*int32")
    assert data.shape == (3, 4)
    assert data.flags.f_contiguous
    np.testing.assert_array_equal(data, np.fromfile(path, dtype="<i4").reshape((3, 4), order="F"))


def test_skip_reads_every_other_block(tmp_path, opened):
    path = tmp_path / "s.bin"
    np.arange(20, dtype="u1").tofile(path)
    data = twfileio.fread(opened("s.bin"), np.inf, "2*uint8=>uint8", 2)
    expected = np.fromfile(path, dtype="u1").reshape(-1, 4)[:, :2].ravel()
    np.testing.assert_array_equal(data.ravel(), expected)


def test_one_value_is_a_number_and_nothing_is_empty(tmp_path, opened):
    path = tmp_path / "one.bin"
    np.array([2.5]).tofile(path)
    fid = opened("one.bin")
    assert twfileio.fread(fid, 1, "double") == 2.5
    rest, count = twfileio.fread(fid, np.inf, "double", nargout=2)
    assert count == 0
    assert rest.size == 0 and rest.dtype == np.float64


def capsule_pointer(capsule):
    get = ctypes.pythonapi.PyCapsule_GetPointer
    get.restype = ctypes.c_void_p
    get.argtypes = [ctypes.py_object, ctypes.c_char_p]
    return get(capsule, None)


def test_result_takes_over_the_library_block(tmp_path, opened):
    path = tmp_path / "own.bin"
    np.arange(1 << 16, dtype="<f8").tofile(path)
    fid = opened("own.bin")
    data = twfileio.fread(fid, np.inf, "double")
    twfileio.fclose(fid)
    gc.collect()
    # The array views the block the library made; the capsule that frees it
    # belongs to the array alone.
    assert not data.flags.owndata
    assert type(data.base).__name__ == "PyCapsule"
    assert data.ctypes.data == capsule_pointer(data.base)
    base = data.base
    references = sys.getrefcount(base)
    assert references == 3  # the array's, `base` and getrefcount's own
    assert data.flags.writeable
    data[0, 0] = -1.0
    np.testing.assert_array_equal(data[1:, 0], np.arange(1, 1 << 16, dtype="f8"))


def test_views_keep_the_block_alive(tmp_path, opened):
    path = tmp_path / "view.bin"
    np.arange(1000, dtype="<f8").tofile(path)
    view = twfileio.fread(opened("view.bin"), np.inf, "double")[500:, 0]
    gc.collect()
    np.testing.assert_array_equal(view, np.arange(500, 1000, dtype="f8"))


def test_inputs_are_lent_to_the_call_and_come_back_intact(tmp_path, opened):
    data = np.asfortranarray(np.arange(6000.0).reshape(60, 100))
    before = data.copy()
    fid = opened("w.bin", "w")
    for _ in range(3):
        assert twfileio.fwrite(fid, data, "double") == data.size
    twfileio.fclose(fid)
    np.testing.assert_array_equal(data, before)
    written = np.fromfile(tmp_path / "w.bin", dtype="<f8")
    np.testing.assert_array_equal(written, np.tile(data.ravel(order="F"), 3))

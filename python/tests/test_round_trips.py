"""Round trips between numpy and files through the built-ins, checked
against numpy on the other side."""
import numpy as np
import pytest
import twfileio

CLASSES = ["float64", "float32", "int8", "uint8", "int16", "uint16", "int32", "uint32", "int64",
           "uint64"]
PRECISION = {"float64": "double", "float32": "single"}


def sample(dtype, shape, rng):
    dt = np.dtype(dtype)
    if dt.kind == "f":
        values = rng.standard_normal(shape).astype(dt)
        values.flat[:3] = [np.inf, -0.0, np.nan]
        return values
    info = np.iinfo(dt)
    return rng.integers(info.min, info.max, shape, dtype=dt, endpoint=True)


@pytest.mark.parametrize("dtype", CLASSES)
@pytest.mark.parametrize("machine,byteorder", [("ieee-le", "<"), ("ieee-be", ">")])
def test_fwrite_then_fread_keeps_every_class(tmp_path, opened, dtype, machine, byteorder):
    data = sample(dtype, (7, 5), np.random.default_rng(7))
    precision = PRECISION.get(dtype, dtype)
    fid = opened("r.bin", "w")
    assert twfileio.fwrite(fid, data, precision, 0, machine) == data.size
    twfileio.fclose(fid)
    # numpy reads what the library wrote, in column-major order.
    on_disk = np.fromfile(tmp_path / "r.bin", dtype=np.dtype(dtype).newbyteorder(byteorder))
    np.testing.assert_array_equal(on_disk, data.ravel(order="F"))
    back = twfileio.fread(opened("r.bin"), np.array([7.0, 5.0]), "*" + precision, 0, machine)
    assert back.dtype == data.dtype
    np.testing.assert_array_equal(back, data)


def test_logical_arrays_write_as_bytes(tmp_path, opened):
    flags = np.array([[True, False], [False, True]])
    fid = opened("b.bin", "w")
    twfileio.fwrite(fid, flags, "uint8")
    twfileio.fclose(fid)
    np.testing.assert_array_equal(np.fromfile(tmp_path / "b.bin", dtype="u1"), [1, 0, 0, 1])


def test_fprintf_then_fgets_and_numpy_loadtxt(tmp_path, opened):
    values = np.linspace(-3, 3, 13)
    fid = opened("t.txt", "w")
    twfileio.fprintf(fid, "%.17g\n", values)
    twfileio.fclose(fid)
    np.testing.assert_array_equal(np.loadtxt(tmp_path / "t.txt"), values)
    fid = opened("t.txt")
    lines = []
    while isinstance(line := twfileio.fgets(fid), str):
        lines.append(line)
    assert line == -1.0
    assert [float(s) for s in lines] == values.tolist()


def test_text_keeps_characters_beyond_ascii(tmp_path, opened):
    text = "naïve 😀 ✓"
    fid = opened("u.txt", "w")
    twfileio.fprintf(fid, "%s", text)
    twfileio.fclose(fid)
    assert (tmp_path / "u.txt").read_text(encoding="utf-8") == text
    assert twfileio.sprintf("%s|%d", text, np.int32(5)) == text + "|5"
    # Reading text decodes each character to one unit: supplementary ones
    # arrive as the substitute character, as the library's file text does.
    assert twfileio.fgets(opened("u.txt")) == text.replace("😀", "\x1a")


def test_seek_and_tell_move_as_numpy_offsets_say(tmp_path, opened):
    np.arange(100, dtype="<i4").tofile(tmp_path / "p.bin")
    fid = opened("p.bin")
    assert twfileio.fseek(fid, 40, "bof") == 0
    assert twfileio.ftell(fid) == 40
    assert twfileio.fread(fid, 1, "int32") == 10
    assert twfileio.fseek(fid, -4, "eof") == 0
    assert twfileio.fread(fid, 1, "int32") == 99
    assert twfileio.feof(fid) == 0
    twfileio.fread(fid, 1, "int32")
    assert twfileio.feof(fid) == 1

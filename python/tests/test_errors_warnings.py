"""Errors raise twfileio.Error with their identifiers; warnings go through
the warnings module; the functions are the table's."""
import warnings

import numpy as np
import pytest
import twfileio

# What a call that fails raises: (function, arguments, keywords, identifier)
FAILURES = [
    ("fread", (99.5,), {}, "KORVAN:FileIO:InvalidFid"),
    ("fread", ("not a fid",), {}, "KORVAN:FileIO:InvalidFid"),
    ("fclose", (1234.0,), {}, "KORVAN:legacy:26"),
    ("fclose", ("some",), {}, "KORVAN:legacy:30"),
    ("fseek", (1.0, 0.0), {}, "KORVAN:minrhs"),
    ("ftell", (1.0,), {"nargout": 2}, "KORVAN:maxlhs"),
    ("ftell", (1.0,), {"nargout": 10**30}, "KORVAN:maxlhs"),
    ("sprintf", (), {}, "KORVAN:legacy:2"),
    ("sprintf", ("%d", 1), {"nargout": 3}, "KORVAN:legacy:3"),
    ("fwrite", (1.0, [1.0]), {}, "KORVAN:fwrite:UnsupportedClass"),
    ("ftell", (1.0,), {"nargout": -1}, "KORVAN:twfileio:NegativeOutputCount"),
    ("ftell", (object(),), {}, "KORVAN:python:UnsupportedType"),
]


@pytest.mark.parametrize("name,args,kwargs,identifier", FAILURES,
                         ids=[f"{f[0]}-{f[3]}" for f in FAILURES])
def test_errors_carry_their_identifiers(name, args, kwargs, identifier):
    with pytest.raises(twfileio.Error) as caught:
        getattr(twfileio, name)(*args, **kwargs)
    assert caught.value.identifier == identifier
    assert caught.value.message and str(caught.value) == caught.value.message


def test_unknown_names_are_an_error():
    with pytest.raises(twfileio.Error) as caught:
        twfileio.call("fopenn", "x")
    assert caught.value.identifier == "KORVAN:twfileio:UnknownBuiltin"
    assert "fopenn" in caught.value.message


def test_keywords_other_than_nargout_are_type_errors():
    with pytest.raises(TypeError):
        twfileio.ftell(1.0, nargin=1)
    with pytest.raises(TypeError):
        twfileio.ftell(1.0, nargout=1.0)


def test_a_file_that_does_not_open_is_not_an_error(tmp_path):
    fid, message = twfileio.fopen(str(tmp_path / "missing" / "x"), "r", nargout=2)
    assert fid == -1.0
    assert message


def test_every_built_in_of_the_table_is_a_function_with_help():
    assert len(twfileio.builtins) == 16
    for name in twfileio.builtins:
        function = getattr(twfileio, name)
        assert function.__doc__.startswith(name)


def test_warnings_go_through_the_warnings_module():
    with warnings.catch_warnings(record=True) as seen:
        warnings.simplefilter("always")
        text = twfileio.sprintf("a\\qb")
    assert text == "a"
    [warning] = seen
    assert warning.category is twfileio.Warning
    assert issubclass(twfileio.Warning, UserWarning)
    assert warning.message.identifier == "KORVAN:printf:BadEscapeSequenceInFormat"
    assert warning.filename == __file__


def test_a_warning_made_an_error_ends_the_call_with_it(tmp_path, opened):
    fid = opened("w.txt", "w")
    with warnings.catch_warnings():
        warnings.simplefilter("error", twfileio.Warning)
        with pytest.raises(twfileio.Warning) as caught:
            twfileio.fprintf(fid, "x\\q\\q")
    assert caught.value.identifier == "KORVAN:printf:BadEscapeSequenceInFormat"
    # The library is left in order: the file takes further calls.
    assert twfileio.fprintf(fid, "ok") == 2
    assert twfileio.fclose(fid) == 0


def test_a_call_from_inside_a_call_is_refused(opened, monkeypatch):
    fid = opened("n.txt", "w")

    def show(*_):
        twfileio.fclose(fid)  # would pull the file from under fprintf

    monkeypatch.setattr(warnings, "showwarning", show)
    with warnings.catch_warnings():
        warnings.simplefilter("always")
        warnings.showwarning = show
        with pytest.raises(twfileio.Error) as caught:
            twfileio.fprintf(fid, "a\\qb")
    assert caught.value.identifier == "KORVAN:python:NestedCall"
    assert twfileio.fprintf(fid, "ok") == 2


def test_a_failed_call_keeps_nothing_of_its_inputs():
    data = np.arange(1000.0)
    for _ in range(100):
        with pytest.raises(twfileio.Error):
            twfileio.fwrite(99.5, data)
    np.testing.assert_array_equal(data, np.arange(1000.0))

"""Shared fixtures: a scratch folder per test and a file opened in it."""
import contextlib

import pytest
import twfileio


@pytest.fixture
def opened(tmp_path):
    """opened(name, permission) -> fid of a file in the test's folder, closed
    at the end of the test if the test left it open."""
    fids = []

    def open_file(name, permission="r"):
        fid = twfileio.fopen(str(tmp_path / name), permission)
        assert fid >= 3, f"{name} did not open"
        fids.append(fid)
        return fid

    yield open_file
    for fid in fids:
        with contextlib.suppress(twfileio.Error):
            twfileio.fclose(fid)

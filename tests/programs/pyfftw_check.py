"""pyFFTW's builders, FFTW objects and numpy interface against numpy.fft (which
does not use FFTW), over shapes, dtypes, strides, in-place and threads. Run by
run_programs.py on libqnl_rt.so and on Debian's FFTW; both runs must pass the
same cases. Every case is a transform the FFTW3 layer can express as one
descriptor: one batch dimension at most."""
import itertools

import numpy as np
import pytest

import pyfftw
import pyfftw.builders as builders
import pyfftw.interfaces.numpy_fft as npfft

RNG = np.random.default_rng(7)
TOL = {np.complex128: 1e-10, np.float64: 1e-10, np.complex64: 2e-4, np.float32: 2e-4}
SHAPES_1D = [(1,), (2,), (7,), (16,), (17,), (97,), (1000,), (1024,), (4096,)]
SHAPES_ND = [(8, 12), (5, 6, 7), (16, 16), (3, 4, 5, 6)]


def data(shape, dtype):
    x = RNG.standard_normal(shape)
    if np.issubdtype(dtype, np.complexfloating):
        x = x + 1j * RNG.standard_normal(shape)
    return x.astype(dtype)


def close(got, want, dtype):
    scale = max(np.abs(want).max(), 1e-30)
    assert np.abs(got - want).max() / scale < TOL[dtype]


@pytest.mark.parametrize("shape", SHAPES_1D + SHAPES_ND)
@pytest.mark.parametrize("dtype", [np.complex128, np.complex64])
def test_builders_complex(shape, dtype):
    x = data(shape, dtype)
    axes = tuple(range(len(shape)))
    f = builders.fftn(x.copy(), axes=axes)
    close(f(), np.fft.fftn(x), dtype)
    b = builders.ifftn(x.copy(), axes=axes)
    close(b(), np.fft.ifftn(x), dtype)


@pytest.mark.parametrize("shape", SHAPES_1D + SHAPES_ND)
@pytest.mark.parametrize("dtype", [np.float64, np.float32])
def test_builders_real(shape, dtype):
    x = data(shape, dtype)
    axes = tuple(range(len(shape)))
    r = builders.rfftn(x.copy(), axes=axes)
    spectrum = r()
    close(spectrum, np.fft.rfftn(x), dtype)
    c = builders.irfftn(spectrum.copy(), s=shape, axes=axes)
    close(c(), x, dtype)


@pytest.mark.parametrize("shape,axis", [((6, 32), -1), ((6, 32), 0), ((40, 9), -1), ((40, 9), 0)])
@pytest.mark.parametrize("dtype", [np.complex128, np.complex64, np.float64, np.float32])
def test_batched_one_axis(shape, axis, dtype):
    x = data(shape, dtype)
    if np.issubdtype(dtype, np.complexfloating):
        close(builders.fft(x.copy(), axis=axis)(), np.fft.fft(x, axis=axis), dtype)
    else:
        close(builders.rfft(x.copy(), axis=axis)(), np.fft.rfft(x, axis=axis), dtype)


@pytest.mark.parametrize("step", [2, 3])
@pytest.mark.parametrize("dtype", [np.complex128, np.complex64])
def test_strided_views(step, dtype):
    base = data((step * 64,), dtype)
    view = base[::step]
    f = builders.fft(view, overwrite_input=False, avoid_copy=True, auto_contiguous=False, auto_align_input=False)
    close(f(), np.fft.fft(view), dtype)
    grid = data((12, step * 10), dtype)[:, ::step]
    close(builders.fft2(grid, avoid_copy=True, auto_contiguous=False, auto_align_input=False)(), np.fft.fft2(grid), dtype)


@pytest.mark.parametrize("n", [16, 100, 1024])
@pytest.mark.parametrize("dtype", [np.complex128, np.complex64])
def test_fftw_objects_in_and_out_of_place(n, dtype):
    a = pyfftw.empty_aligned(n, dtype=dtype)
    b = pyfftw.empty_aligned(n, dtype=dtype)
    x = data((n,), dtype)
    out_of_place = pyfftw.FFTW(a, b, direction="FFTW_FORWARD")
    a[:] = x
    close(out_of_place(), np.fft.fft(x), dtype)
    # New arrays for the same plan.
    a2, b2 = pyfftw.empty_aligned(n, dtype=dtype), pyfftw.empty_aligned(n, dtype=dtype)
    y = data((n,), dtype)
    a2[:] = y
    out_of_place(a2, b2)
    close(b2, np.fft.fft(y), dtype)
    c = pyfftw.empty_aligned(n, dtype=dtype)
    in_place = pyfftw.FFTW(c, c, direction="FFTW_BACKWARD")
    c[:] = x
    in_place()
    close(c, np.fft.ifft(x), dtype)


@pytest.mark.parametrize("threads", [1, 2, 4])
@pytest.mark.parametrize("shape", [(4096,), (64, 64), (16, 16, 16)])
def test_threads(threads, shape):
    x = data(shape, np.complex128)
    f = builders.fftn(x.copy(), threads=threads)
    close(f(), np.fft.fftn(x), np.complex128)


@pytest.mark.parametrize("name,real", [("fft", False), ("ifft", False), ("rfft", True), ("fft2", False),
                                       ("ifft2", False), ("rfft2", True), ("fftn", False), ("rfftn", True)])
@pytest.mark.parametrize("dtype", [np.float64, np.float32])
def test_numpy_interface(name, real, dtype):
    shape = (12, 20)
    x = data(shape, dtype if real else np.result_type(dtype, np.complex64))
    got = getattr(npfft, name)(x)
    want = getattr(np.fft, name)(x)
    close(got, want, dtype if real else x.dtype.type)


@pytest.mark.parametrize("n", [15, 16])
def test_numpy_interface_round_trip(n):
    x = data((n,), np.float64)
    close(npfft.irfft(npfft.rfft(x), n), x, np.float64)
    close(npfft.ifft(npfft.fft(x)), x, np.float64)

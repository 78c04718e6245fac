"""pyFFTW's builders, FFTW objects and numpy interface against numpy.fft (which
does not use FFTW), over shapes, dtypes, strides, in-place and threads. Run by
run_programs.py on libqnl_rt.so and on Debian's FFTW; both runs must pass the
same cases. Every case is a transform the FFTW3 layer can express as one
descriptor: one batch dimension at most."""
import numpy as np
import pytest

import pyfftw
import pyfftw.builders as builders
import pyfftw.interfaces.numpy_fft as npfft

RNG = np.random.default_rng(7)
TOL = {np.complex128: 1e-10, np.float64: 1e-10, np.complex64: 2e-4, np.float32: 2e-4}
SHAPES = [(1,), (2,), (7,), (16,), (17,), (97,), (1000,), (1024,), (4096,), (8, 12), (5, 6, 7), (16, 16), (3, 4, 5, 6)]
DTYPES = [np.complex128, np.complex64, np.float64, np.float32]


def data(shape, dtype):
    x = RNG.standard_normal(shape)
    if np.issubdtype(dtype, np.complexfloating):
        x = x + 1j * RNG.standard_normal(shape)
    return x.astype(dtype)


def close(got, want, dtype):
    scale = max(np.abs(want).max(), 1e-30)
    assert np.abs(got - want).max() / scale < TOL[dtype]


# Complex: forward and backward; real: r2c, then c2r of that spectrum back to the input.
@pytest.mark.parametrize("shape", SHAPES)
@pytest.mark.parametrize("dtype", DTYPES)
def test_builders(shape, dtype):
    x = data(shape, dtype)
    axes = tuple(range(len(shape)))
    if np.issubdtype(dtype, np.complexfloating):
        close(builders.fftn(x.copy(), axes=axes)(), np.fft.fftn(x), dtype)
        close(builders.ifftn(x.copy(), axes=axes)(), np.fft.ifftn(x), dtype)
    else:
        spectrum = builders.rfftn(x.copy(), axes=axes)()
        close(spectrum, np.fft.rfftn(x), dtype)
        close(builders.irfftn(spectrum.copy(), s=shape, axes=axes)(), x, dtype)


@pytest.mark.parametrize("shape,axis", [((6, 32), -1), ((6, 32), 0), ((40, 9), -1), ((40, 9), 0)])
@pytest.mark.parametrize("dtype", DTYPES)
def test_batched_one_axis(shape, axis, dtype):
    x = data(shape, dtype)
    name = "fft" if np.issubdtype(dtype, np.complexfloating) else "rfft"
    close(getattr(builders, name)(x.copy(), axis=axis)(), getattr(np.fft, name)(x, axis=axis), dtype)


@pytest.mark.parametrize("step", [2, 3])
@pytest.mark.parametrize("dtype", [np.complex128, np.complex64])
def test_strided_views(step, dtype):
    keep = dict(avoid_copy=True, auto_contiguous=False, auto_align_input=False)
    view = data((step * 64,), dtype)[::step]
    close(builders.fft(view, overwrite_input=False, **keep)(), np.fft.fft(view), dtype)
    grid = data((12, step * 10), dtype)[:, ::step]
    close(builders.fft2(grid, **keep)(), np.fft.fft2(grid), dtype)


# Out of place, the same plan on new arrays, then in place backward.
@pytest.mark.parametrize("n", [16, 100, 1024])
@pytest.mark.parametrize("dtype", [np.complex128, np.complex64])
def test_fftw_objects_in_and_out_of_place(n, dtype):
    a, b, a2, b2, c = (pyfftw.empty_aligned(n, dtype=dtype) for _ in range(5))
    x, y = data((n,), dtype), data((n,), dtype)
    # Planning may write to the arrays: the data goes in after.
    out_of_place, in_place = pyfftw.FFTW(a, b, direction="FFTW_FORWARD"), pyfftw.FFTW(c, c, direction="FFTW_BACKWARD")
    a[:], a2[:], c[:] = x, y, x
    close(out_of_place(), np.fft.fft(x), dtype)
    out_of_place(a2, b2)
    close(b2, np.fft.fft(y), dtype)
    in_place()
    close(c, np.fft.ifft(x), dtype)


@pytest.mark.parametrize("threads", [1, 2, 4])
@pytest.mark.parametrize("shape", [(4096,), (64, 64), (16, 16, 16)])
def test_threads(threads, shape):
    x = data(shape, np.complex128)
    close(builders.fftn(x.copy(), threads=threads)(), np.fft.fftn(x), np.complex128)


@pytest.mark.parametrize("name", ["fft", "ifft", "rfft", "fft2", "ifft2", "rfft2", "fftn", "rfftn"])
@pytest.mark.parametrize("dtype", [np.float64, np.float32])
def test_numpy_interface(name, dtype):
    real = name.startswith("r")
    x = data((12, 20), dtype if real else np.result_type(dtype, np.complex64))
    close(getattr(npfft, name)(x), getattr(np.fft, name)(x), dtype if real else x.dtype.type)


@pytest.mark.parametrize("n", [15, 16])
def test_numpy_interface_round_trip(n):
    x = data((n,), np.float64)
    close(npfft.irfft(npfft.rfft(x), n), x, np.float64)
    close(npfft.ifft(npfft.fft(x)), x, np.float64)

"""Builds quil_linear._core, the hand API's pybind11 binding with the whole library compiled in,
so the package needs no installed libquil_linear.

The extension is built by CMake (python/CMakeLists.txt), from the same description of the
library's sources and exactness rules (cmake/quil_linear_library.cmake) as the native and
WebAssembly builds, taken from the repository this directory sits in.
"""
import os
import re
import subprocess
import sys

from setuptools import Extension, setup
from setuptools.command.build_ext import build_ext

here = os.path.dirname(os.path.abspath(__file__))
root = os.path.dirname(here)


def library_version():
    header = os.path.join(root, "include", "quil_linear", "hand.h")
    if not os.path.exists(header):
        raise SystemExit(
            "quil_linear: the library sources are not beside this directory (%s). Install from a "
            "checkout of the repository: python3 -m pip install ./python" % root
        )
    with open(header) as f:
        return re.search(r'#define QUIL_LINEAR_VERSION_STRING "([^"]+)"', f.read()).group(1)


class CMakeBuild(build_ext):
    """Configures python/CMakeLists.txt for this interpreter and builds the extension into
    the place setuptools packs it from (QUIL_BUILD_JOBS=N caps the parallel compiles)."""

    def build_extension(self, ext):
        output = os.path.dirname(os.path.abspath(self.get_ext_fullpath(ext.name)))
        work = os.path.abspath(os.path.join(self.build_temp, "cmake"))
        os.makedirs(work, exist_ok=True)
        import pybind11

        configure = ["cmake", "-S", here, "-B", work, "-DPython3_EXECUTABLE=" + sys.executable,
                     "-Dpybind11_DIR=" + pybind11.get_cmake_dir(),
                     "-DQUIL_PYTHON_OUTPUT_DIR=" + output]
        subprocess.check_call(configure)
        jobs = os.environ.get("QUIL_BUILD_JOBS") or str(os.cpu_count() or 1)
        subprocess.check_call(["cmake", "--build", work, "-j", jobs])


setup(
    version=library_version(),
    package_dir={"": "src"},
    packages=["quil_linear", "quil_linear.dataset"],
    ext_modules=[Extension("quil_linear._core", sources=[])],
    cmdclass={"build_ext": CMakeBuild},
)

"""Builds quil_linear._core: the hand API's pybind11 binding with the whole library compiled in,
so the package needs no installed libquil_linear.

The library's sources are taken from the repository this directory sits in (core/, models/,
api/, include/), compiled with the library's own rules for exact results: -O2 with no
floating-point contraction and no fast-math.
"""
import os
import re
from glob import glob

from pybind11.setup_helpers import ParallelCompile, Pybind11Extension, build_ext
from setuptools import setup

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


def in_root(*patterns):
    # setuptools takes paths relative to this directory only.
    found = (p for pattern in patterns for p in glob(os.path.join(root, pattern)))
    return sorted(os.path.relpath(p, here) for p in found)


version = library_version()

# The library as its own build compiles it (CMake's quil_linear_objects).
library_sources = in_root("core/*.cpp", "models/*.cpp", "api/exports.cpp", "api/hand.cpp", "api/state_codec.cpp", "api/profile.cpp",
                          "api/slot_facts.cpp")
# quil-retarget's session readers, so read_session accepts exactly the files the tool accepts.
reader_sources = in_root("tools/npy.cpp", "tools/retarget_io.cpp", "tools/session_source.cpp", "tools/session_file.cpp")
# Headers and the symbol map: a change to any of them rebuilds the extension.
depends = in_root("core/*.h", "models/*.h", "models/*.inc", "api/*.h", "include/quil_linear/*.h",
                  "include/quil_linear/*.hpp", "tools/npy.h", "tools/retarget_io.h", "tools/session_source.h",
                  "tools/session_file.h")
version_script = os.path.join("src", "extension.map")

extension = Pybind11Extension(
    "quil_linear._core",
    sources=[os.path.join("src", "_core.cpp"), os.path.join("src", "_session.cpp")] + library_sources + reader_sources,
    depends=depends + [version_script],
    include_dirs=[root, os.path.join(root, "include"), os.path.join(root, "tools")],
    cxx_std=17,
    # Last on the command line, so they win over anything the environment's CFLAGS ask for.
    extra_compile_args=["-O2", "-fno-fast-math", "-ffp-contract=off"],
    extra_link_args=["-Wl,--version-script=" + os.path.join(here, version_script)],
)

# The library is some thirty small sources: compile them on every core (QUIL_BUILD_JOBS=N to cap).
ParallelCompile("QUIL_BUILD_JOBS").install()

setup(
    version=version,
    package_dir={"": "src"},
    packages=["quil_linear", "quil_linear.dataset"],
    ext_modules=[extension],
    cmdclass={"build_ext": build_ext},
)

import re
import subprocess
import sys
from ctypes import CFUNCTYPE, POINTER, c_bool, c_char_p, c_double, c_int, c_int32, c_uint8, c_uint16, c_uint32, c_uint64, c_void_p

import pytest
from conftest import DESCRIPTIONS, SOURCE

from igh_master import EthercatError, _library

C_TYPES = {"bool": c_bool, "double": c_double, "int32_t": c_int32, "ETHERCAT_DATA_TYPE": c_int, "uint8_t": c_uint8,
           "uint16_t": c_uint16, "uint32_t": c_uint32, "uint64_t": c_uint64, "const char*": c_char_p, "void*": c_void_p,
           "const void*": c_void_p, "_ETHERCAT_COMM_DIAG_INFO": _library.DiagInfo,
           "igh_master_error_callback": _library.ErrorCallback, "igh_master_exchange_callback": _library.ExchangeCallback}


def ctype(text):
    text = text if text in C_TYPES else text.removeprefix("const ")
    return C_TYPES[text] if text in C_TYPES else POINTER(C_TYPES[text.removesuffix("*")])


def test_the_functions_are_those_of_the_header(bus):
    header = (SOURCE / "include/igh_master.h").read_text()
    prototypes = re.findall(r"^IGH_MASTER_API (\w+) igh_master_(\w+)\(uint16_t id,?([^)]*)\);", header, re.M)
    assert len(prototypes) == 48 == len(_library.FUNCTIONS)
    for result, name, arguments in prototypes:
        types = [ctype(re.sub(r" \w+$", "", argument.strip())) for argument in arguments.split(",") if argument]
        assert [getattr(kind, "kind", kind) for kind in _library.FUNCTIONS[name]] == types, name
        assert (getattr(_library.library(), "igh_master_" + name).restype is None) == (result == "void"), name
    record = re.search(r"struct _ETHERCAT_COMM_DIAG_INFO \{(.*?)\}", header, re.S)[1]
    assert [kind for _, kind in _library.DiagInfo._fields_] == [ctype(kind) for kind in re.findall(r"(\w+_t) ", record)]


def test_a_library_that_is_not_there(monkeypatch):
    monkeypatch.setenv("IGH_MASTER_LIBRARY", "libnone.so")
    with pytest.raises(EthercatError, match=r"libnone.so.*\(IGH_MASTER_LIBRARY names"):
        _library.library.__wrapped__()


def test_example(bus):
    bus().close()
    output = subprocess.run([sys.executable, SOURCE / "examples/python/run_machine.py", "--cycles", "50", *DESCRIPTIONS],
                            check=True, capture_output=True, text=True).stdout
    assert output == "8 slaves, 0 errors\nPosition actual value: 47\nMode of operation: 8\nAL state: 8\n"


def test_pip_installs_it_without_a_network(tmp_path):
    pytest.importorskip("pip")
    pytest.importorskip("wheel")
    tree = tmp_path / "python"
    subprocess.run(["cp", "-r", SOURCE / "python", tree], check=True)
    subprocess.run([sys.executable, "-m", "pip", "-q", "install", "--no-build-isolation", "--no-index", "--target",
                    tmp_path / "site", tree], check=True)
    version = re.search(r"project\(igh_master VERSION (\S+)", (SOURCE / "CMakeLists.txt").read_text())[1]
    assert (tmp_path / f"site/igh_master-{version}.dist-info").exists()
    installed = [path.name for path in (tmp_path / "site/igh_master").iterdir()]
    assert {path.name for path in (SOURCE / "python/igh_master").glob("[!_]*.*")} <= set(installed)

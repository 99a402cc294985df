#!/usr/bin/env python3
"""release.py RELEASE ECRT_H FOLDER: a header and a library of one release of the IgH master, for link checks.

Made from the header of the simulated master (the patched 1.5.2) by taking away and changing what the release lacks.
The library's calls do nothing.
"""
import pathlib
import re
import subprocess
import sys

VOID_IN_PATCHED = ("slave_config_dc slave_config_state sdo_request_timeout sdo_request_read sdo_request_write "
                   "domain_process domain_queue domain_state master_deactivate master_receive master_state "
                   "master_application_time master_sync_reference_clock master_sync_slave_clocks").split()


def stock(header, minor):
    header = re.sub(r"#define ECRT_VER_PATCH.*\n|#define ECRT_VERSION.*\n", "", header)
    header = re.sub(r"#define ECRT_VER_MINOR \d+",
                    f"#define ECRT_VER_MINOR {minor}\n#define ECRT_VERSION(a, b) (((a) << 8) + (b))\n"
                    "#define ECRT_VERSION_MAGIC ECRT_VERSION(ECRT_VER_MAJOR, ECRT_VER_MINOR)", header)
    header = re.sub(r"ec_sdo_request_t\* ecrt_slave_config_create_sdo_request_complete\([^;]*;\n", "", header)
    header = re.sub(r"  unsigned int scan_busy.*\n", "", header)
    header = header.replace("EC_DIR_BOTH, ", "")
    # The record of a slave is as large, with other places: its state follows the ports at once.
    header = re.sub(r"  uint8_t (upstream_port|scan_required|ready|bypassed);\n", "", header)
    # Of a configuration's state only online, operational and al_state.
    return re.sub(r"(unsigned int al_state : 4;.*\n)  unsigned int error_flag.*\n.*ready.*\n.*position.*\n", r"\1", header)


def of_release(header, release):
    if release == "patched":
        return header
    header = stock(header, 6 if release == "1.6" else 5)
    if release == "1.5.2":
        return header.replace("#define EC_HAVE_SYNC_TO\n", "").replace("size_t ecrt_master_send", "void ecrt_master_send")
    for name in VOID_IN_PATCHED:
        header = header.replace(f"void ecrt_{name}(", f"int ecrt_{name}(")
    for argument in ("ecrt_domain_data(ec_domain_t*", "ecrt_sdo_request_data(ec_sdo_request_t*",
                     "ecrt_master_reference_clock_time(ec_master_t*"):
        header = header.replace(argument, argument.replace("(", "(const "))
    return header.replace("size_t ecrt_master_send", "int ecrt_master_send")


def stubs(header):
    # What the releases are known to have, so that a slip in the changes above is no quiet pass.
    al_state, size = (105 if "upstream_port" in header else 104), 176
    text = ("#include <ecrt.h>\n"
            f'_Static_assert(offsetof(ec_slave_info_t, al_state) == {al_state} && sizeof(ec_slave_info_t) == {size}, "");\n'
            '_Static_assert(sizeof(ec_slave_config_state_t) == 4 && sizeof(ec_master_state_t) == 8, "");\n')
    for result, name, arguments in re.findall(r"^([\w ]+\*? ?)\b(ecrt_\w+)\(([^;]*)\);", header, re.MULTILINE):
        value = "ECRT_VERSION_MAGIC" if name == "ecrt_version_magic" else "0"
        body = "" if result.strip() == "void" else f"return {value};"
        text += f"{result} {name}({arguments}) {{ {body} }}\n"
    return text


def main():
    release, source, folder = sys.argv[1], pathlib.Path(sys.argv[2]), pathlib.Path(sys.argv[3])
    header = of_release(source.read_text(), release)
    for name in ("include", "lib"):
        (folder / name).mkdir(parents=True, exist_ok=True)
    (folder / "include/ecrt.h").write_text(header)
    (folder / "stubs.c").write_text(stubs(header))
    for name in ("ethercat", "ethercat_rtdm"):
        subprocess.run(["cc", "-shared", "-fPIC", f"-Wl,-soname,lib{name}.so.1", f"-I{folder}/include", "-w",
                        f"{folder}/stubs.c", "-o", f"{folder}/lib/lib{name}.so.1"], check=True)
        link = folder / f"lib/lib{name}.so"
        link.unlink(missing_ok=True)
        link.symlink_to(f"lib{name}.so.1")


main()

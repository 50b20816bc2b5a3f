#!/usr/bin/env python3
"""scripts/check-includes on small trees written here: it passes a tree that keeps the
rules and names each breach of one that does not.

usage: check_includes_test.py CHECK_INCLUDES
"""
import os
import subprocess
import sys
import tempfile

failures = []


def check(name, condition, detail=""):
    if not condition:
        failures.append(f"{name}: {detail}")
    print(("ok   " if condition else "FAIL ") + name)


def write_tree(root, files):
    for path, text in files.items():
        full = os.path.join(root, path)
        os.makedirs(os.path.dirname(full), exist_ok=True)
        with open(full, "w") as f:
            f.write(text)


def run(files):
    with tempfile.TemporaryDirectory() as root:
        write_tree(root, files)
        result = subprocess.run([sys.executable, CHECKER, root], capture_output=True, text=True, timeout=60)
        return result.returncode, result.stdout


CLEAN = {
    "platform/com/HResult.h": "#pragma once\n",
    "platform/gpu/GlApi.h": "#pragma once\n#include <epoxy/gl.h>\n",
    "platform/gpu/Device.h": '#pragma once\n#include "platform/com/HResult.h"\n',
    "platform/gpu/Device.cpp": '#include "platform/gpu/Device.h"\n#include "platform/gpu/GlApi.h"\n',
    "qx4d/core/Scene.h": '#pragma once\n#include "qx4d/content/Mesh.h"\n#include "platform/gpu/Device.h"\n',
    "qx4d/content/Mesh.h": '#pragma once\n#include "qx4d/core/device/Renderer.h"\n',
    "qx4d/core/device/Renderer.h": "#pragma once\n",
    "effects/Fades.h": '#pragma once\n#include "platform/com/HResult.h"\n',
    "host/Catalog.cpp": '#include "effects/Fades.h"\n#include <vector>\n',
    "tests/host/CatalogTest.cpp": '#include "apps/qxfx/List.h"\n',
    "tests/platform/gpu/DeviceTest.cpp": '#include "platform/gpu/GlApi.h"\n',
    "apps/qxfx/List.h": '#pragma once\n#include "host/Catalog.h"\n',
}


def breach_case(name, extra, expected):
    code, out = run({**CLEAN, **extra})
    check(name, code == 1 and expected in out, f"exit {code}, output {out!r}")


def main():
    global CHECKER
    CHECKER = sys.argv[1]
    code, out = run(CLEAN)
    check("a tree that keeps the rules passes", code == 0 and out == "", f"exit {code}, output {out!r}")
    breach_case("an include of a layer above", {"effects/Fades.h": '#pragma once\n#include "host/Catalog.h"\n',
                                                 "host/Catalog.h": "#pragma once\n"},
                'effects/Fades.h:2: includes "host/Catalog.h" of layer host, above its own layer effects')
    breach_case("a folder in no layer", {"widgets/Knob.cpp": "\n"}, "widgets/Knob.cpp: its folder is in no layer")
    breach_case("OpenGL outside its layer", {"host/Draw.cpp": "#include <epoxy/gl.h>\n"},
                "host/Draw.cpp:1: includes <epoxy/gl.h>")
    breach_case("a header that reaches OpenGL is private",
                {"platform/gpu/Texture.h": '#pragma once\n#include "platform/gpu/GlApi.h"\n',
                 "qx4d/core/Texture.h": '#pragma once\n#include "platform/gpu/Texture.h"\n'},
                'qx4d/core/Texture.h:2: includes "platform/gpu/Texture.h", a private header of platform/gpu')
    breach_case("an OpenGL type in a public header",
                {"qx4d/core/device/Renderer.h": "#pragma once\nstruct R {\n    GLuint name;\n};\n"},
                "qx4d/core/device/Renderer.h:3: names the OpenGL type GLuint")
    if failures:
        sys.exit("\n".join(failures))


if __name__ == "__main__":
    main()

#!/usr/bin/env python3
"""Writes the seed corpus of the archive fuzz target into tests/fuzz/corpus.

Well-formed exchange archives and damaged ones, each small: a wrong member type, a missing
entry, unsafe entry names, deep nesting, checksum damage, truncation, another kind's document.
With --archive, a real archive written by `ussctl export` is added too.

    make-corpus.py [--archive export.uss] [--out corpus-folder]
"""
import argparse
import copy
import json
import os
import shutil
import zipfile

SVG = ('<svg xmlns="http://www.w3.org/2000/svg" data-version="231">'
       '<g data-layer="0"><line x1="0" y1="0" x2="10" y2="10"/></g>'
       '<g data-layer="1" data-hidden="1" display="none"/></svg>\n')
PNG = b"\x89PNG\r\n\x1a\n" + bytes(range(40))


def element(ident, date):
    return {
        "packet": "Трубы",
        "folder": "Отводы\\90",
        "id": ident,
        "type": "pipe",
        "atr": [
            {"name": "USS_LAST_CHANGE_DATE", "num": 1, "type": 3, "val": date},
            {"name": "USS_AUTHOR", "num": 2, "type": 3, "val": "ivan\\pc1"},
            {"name": "Length", "num": 3, "type": 2, "var": "L", "measure": "мм", "val": "2.5",
             "desc": "Длина", "old-num": 7},
            {"name": "Mass", "num": 4, "type": 2, "formula": "{L}*2"},
        ],
        "model": {"name": "model", "version": 231, "file": "TX\\model\\1.m3d",
                  "icon": "TX\\model\\1.png", "digest": "0" * 32},
        "prj": [{"name": "top", "type": 1, "view": 0, "file": "TX\\prj\\2.frw",
                 "icon": "TX\\prj\\2.png", "digest": "1" * 32}],
        "repPath": "TX\\repr\\3.xml",
        "spc": [{"libName": "lib", "style": 1, "fPart": 2, "sPart": 3,
                 "column": [{"num": 1, "val": "{L}"}]}],
    }


def document(elements, key="TX"):
    return {"comment": {"encoding": "utf8", "lib-name": key, "export-date": "2024.03.05 14:07:31",
                        "item-count": len(elements)},
            "std-size": elements}


FILES = {"TX\\model\\1.m3d": SVG.encode(), "TX\\model\\1.png": PNG,
         "TX\\prj\\2.frw": SVG.encode(), "TX\\prj\\2.png": PNG,
         "TX\\repr\\3.xml": b"<repr kind=\"pipe\"/>\n"}


def write(path, doc_bytes, files=FILES, doc_name="TX.json", method=zipfile.ZIP_DEFLATED):
    with zipfile.ZipFile(path, "w", method) as archive:
        # A fixed time stamp keeps the corpus byte-identical from run to run.
        for name, data in [(doc_name, doc_bytes)] + list(files.items()):
            info = zipfile.ZipInfo(name, date_time=(2024, 3, 5, 14, 7, 30))
            info.compress_type = method
            archive.writestr(info, data)


def dump(doc):
    return json.dumps(doc, ensure_ascii=False, indent=3, sort_keys=True).encode("utf-8")


def main():
    parser = argparse.ArgumentParser()
    parser.add_argument("--archive")
    parser.add_argument("--out", default=os.path.join(os.path.dirname(__file__), "corpus"))
    args = parser.parse_args()
    out = args.out
    os.makedirs(out, exist_ok=True)
    p = lambda name: os.path.join(out, name)

    good = document([element("1", "05.05.2024 12:00:00"), element("2", "01.01.2024 00:00:00")])
    write(p("good.uss"), dump(good))
    write(p("good_stored.uss"), dump(good), method=zipfile.ZIP_STORED)
    write(p("slash_names.uss"), dump(good),
          files={k.replace("\\", "/"): v for k, v in FILES.items()})
    write(p("empty_std_size.uss"), dump(document([])))
    write(p("other_lib_name.uss"), dump(document([element("1", "d")], key="VK")))
    write(p("other_kind.uss"), dump(document([element("1", "d")], key="VK")), doc_name="VK.json")
    write(p("no_document.uss"), b"", files=FILES, doc_name="readme.txt")

    wrong = copy.deepcopy(good)
    wrong["std-size"][0]["atr"][0]["num"] = "one"
    write(p("wrong_type_num.uss"), dump(wrong))
    wrong = copy.deepcopy(good)
    wrong["std-size"][0]["prj"] = {"name": "x"}
    write(p("wrong_type_prj.uss"), dump(wrong))
    wrong = copy.deepcopy(good)
    wrong["std-size"][0]["atr"][2]["num"] = 99999999999999
    write(p("int_out_of_range.uss"), dump(wrong))
    wrong = copy.deepcopy(good)
    wrong["comment"] = ["not", "an", "object"]
    write(p("comment_not_object.uss"), dump(wrong))
    wrong = copy.deepcopy(good)
    wrong["std-size"][0]["model"] = None
    wrong["comment"]["item-count"] = 42
    write(p("null_model_wrong_count.uss"), dump(wrong))

    missing = copy.deepcopy(good)
    missing["std-size"][0]["model"]["file"] = "TX\\model\\99.m3d"
    write(p("missing_entry.uss"), dump(missing))
    for tag, name in (("dotdot", "TX\\..\\..\\evil.m3d"), ("absolute", "/tmp/evil.m3d"),
                      ("drive", "C:\\evil.m3d"), ("control", "TX\\model\\\u0001.m3d")):
        unsafe = copy.deepcopy(good)
        unsafe["std-size"][0]["model"]["file"] = name
        files = dict(FILES)
        files[name] = b"evil"
        write(p("unsafe_%s.uss" % tag), dump(unsafe), files=files)

    deep = b'{"comment":{"encoding":"utf8","lib-name":"TX","export-date":"x"},"std-size":' + \
        b"[" * 5000 + b"]" * 5000 + b"}"
    write(p("deep_nesting.uss"), deep)
    write(p("not_json.uss"), b"{\"comment\": {\"encoding\": \"utf8\", ")

    legacy = document([element("3", "01.01.2024 00:00:00")])
    del legacy["comment"]["encoding"]
    write(p("legacy_code_page.uss"), json.dumps(legacy, ensure_ascii=False).encode("cp1251"))

    # A model that expands like a bomb: 32 MiB of zeros in a few KiB.
    files = dict(FILES)
    files["TX\\model\\1.m3d"] = bytes(32 << 20)
    write(p("zip_bomb.uss"), dump(good), files=files)

    # Checksum damage: a stored entry with one byte changed after the archive was written.
    write(p("crc_damage.uss"), dump(good), method=zipfile.ZIP_STORED)
    data = bytearray(open(p("crc_damage.uss"), "rb").read())
    at = data.find(b"data-layer=\"1\"")
    data[at] ^= 0x20
    open(p("crc_damage.uss"), "wb").write(bytes(data))

    # Bare documents: the fuzz target packs an input that starts with "{" into an archive.
    open(p("document_good.json"), "wb").write(dump(good))
    open(p("document_null_model.json"), "wb").write(
        dump(document([dict(element("4", "d"), model=None, prj=[])])))
    loose = copy.deepcopy(good)
    loose["std-size"][0]["model"]["version"] = 231.5
    loose["std-size"][1]["model"]["version"] = True
    open(p("document_loose_version.json"), "wb").write(dump(loose))
    open(p("document_legacy.json"), "wb").write(json.dumps(legacy, ensure_ascii=False).encode("cp1251"))

    whole = open(p("good.uss"), "rb").read()
    open(p("truncated.uss"), "wb").write(whole[: len(whole) // 2])
    open(p("not_zip.uss"), "wb").write(b"PK\x03\x04 this is not really an archive\n")
    open(p("empty_file.uss"), "wb").write(b"")

    if args.archive:
        shutil.copyfile(args.archive, p("written_by_export.uss"))


if __name__ == "__main__":
    main()

# Run by gdb on a program with full debug information: every name in the expressions of tessarn.natvis is a field of its
# class. Visual Studio itself says nothing when one is not.
import os
import re
import xml.etree.ElementTree

space = "{http://schemas.microsoft.com/vstudio/debugger/natvis/2010}"


def expressions(node):
    for part in node.iter():
        yield part.get("Condition") or ""
        text = part.text or ""
        if part.tag == space + "DisplayString":
            yield from re.findall(r"\{([^{}]*)\}", text)
        elif part.tag in (space + "Size", space + "ValuePointer"):
            yield text


def check(node, name):
    fields = {f.name for f in gdb.lookup_type(name).fields()}
    used = {w for e in expressions(node) for w in re.findall(r"(?<!\$)\b[a-z_]\w*", e)}
    if not used or used - fields:
        print("%s: %s" % (name, ", ".join(sorted(used - fields)) or "uses no field"))
        return False
    return True


types = xml.etree.ElementTree.parse(os.environ["NATVIS"]).getroot().findall(space + "Type")
names = [t.get("Name").replace("*", entry) for t in types for entry in ("long double", "cplx")]
good = all([check(t, t.get("Name").replace("*", entry)) for t in types for entry in ("long double", "cplx")])
print("%d classes, every field is there" % len(set(names)) if good else "names without a field")

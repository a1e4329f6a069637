"""How gdb shows times, frames, views and contexts: as qDebug() does. Loaded by gdb together with the library."""

import gdb
import gdb.printing

LARGEST_VALID_TIME = 2147483646.0
INVALID_FRAME = 0xFFFFFFFF


def time_text(time):
    frames = float(time["m_frames"])
    if frames > LARGEST_VALID_TIME:
        return "Time(invalid)"
    return "Time({!r})".format(int(frames) if frames.is_integer() else frames)


def frame_text(frame):
    number = int(frame["m_number"])
    return "Frame({})".format(number) if number != INVALID_FRAME else "Frame(invalid)"


def view_text(view):
    number = int(view["m_id"])
    return "View({})".format(number) if number < 0x80000000 else "View(invalid)"


def flags_number(flags):
    flags = flags["m_flags"]
    flags = flags[flags.type.fields()[0]]
    return sum(1 << bit for bit in range(4) if flags[bit])


def context_text(context):
    return "Context({}, {}, flags {})".format(
        time_text(context["time"]), view_text(context["view"]), flags_number(context["flags"]))


def base_context_text(context):
    return "BaseContext({})".format(time_text(context["time"]))


def printer(text):
    class Printer:
        def __init__(self, value):
            self.value = value

        def to_string(self):
            return text(self.value)

    return Printer


def printers():
    collection = gdb.printing.RegexpCollectionPrettyPrinter("Prm")
    for name, text in [
        ("Time", time_text),
        ("Frame", frame_text),
        ("View", view_text),
        ("BaseContext", base_context_text),
        ("Context(::Explicit)?", context_text),
    ]:
        collection.add_printer(name, "^Prm::" + name + "$", printer(text))
    return collection


gdb.printing.register_pretty_printer(gdb.current_objfile(), printers(), replace=True)

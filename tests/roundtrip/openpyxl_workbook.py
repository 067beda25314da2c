"""openpyxl's side of the spreadsheet round trip (an independent writer).

  write <out.xlsx>       a workbook as another program makes one: columns in
                         another order, shared strings, typed cells, a
                         formula, an error, a date
  check <dump>           the program's import of it (workbook_tool dump) holds
                         what was written
"""
import datetime
import sys

import openpyxl


def write(path):
    book = openpyxl.Workbook()
    sheet = book.active
    sheet.title = "Exported elsewhere"
    sheet.append(["Data type", "Value", "Path", "Scan rate", "Archive", "Readable", "Writable"])
    sheet.append(["VT_BSTR", "007", "Texts.Zeros", 500, 1, 1, 0])
    sheet.append(["VT_BSTR", "=1+2", "Texts.Formula text", 1000, 0, 1, 1])
    sheet["B3"].data_type = "s"
    sheet.append(["VT_I8", 9007199254740992, "Numbers.I8", 1000, 0, 1, 1])
    sheet.append(["VT_UI8", "18446744073709551615", "Numbers.UI8 as text", 1000, 0, 1, 1])
    sheet.append(["VT_R8", 0.30000000000000004, "Numbers.R8", 250, 0, 1, 1])
    sheet.append(["VT_R8", "2,5", "Numbers.Comma text", 250, 0, 1, 1])
    sheet.append(["VT_BOOL", True, "Flags.Bool", 1000, True, True, False])
    sheet.append(["VT_DATE", datetime.datetime(2024, 2, 1, 13, 45, 30), "Dates.Date", 1000, 0, 1, 1])
    sheet.append(["VT_I4", "=6*7", "Numbers.Formula", 1000, 0, 1, 1])
    sheet.append([])
    sheet.append(["VT_I4", "#N/A", "Numbers.Error", 1000, 0, 1, 1])
    sheet["B12"].data_type = "e"
    sheet.append(["VT_BSTR", "  blanks  ", "Texts.Blanks", 1000, 0, 1, 1])
    book.save(path)


EXPECTED = [
    "Texts.Zeros|VT_BSTR|007|101|500",
    "Texts.Formula text|VT_BSTR|=1+2|110|1000",
    "Texts.Blanks|VT_BSTR|  blanks  |110|1000",
    "Numbers.I8|VT_I8|9007199254740992|110|1000",
    "Numbers.UI8 as text|VT_UI8|18446744073709551615|110|1000",
    "Numbers.R8|VT_R8|0.3|110|250",
    "Numbers.Comma text|VT_R8|2.5|110|250",
    "Flags.Bool|VT_BOOL|True|101|1000",
    "Dates.Date|VT_DATE|02/01/2024 13:45:30|110|1000",
]


def check(path):
    with open(path, encoding="utf-8") as f:
        lines = [line.rstrip("\r\n") for line in f]
    ok = True
    for line in EXPECTED:
        if line not in lines:
            print("missing: " + line)
            ok = False
    # openpyxl stores no result for its formula: the row is reported, not taken.
    formula = [l for l in lines if l.startswith("rejected row 10:") and "formula without a stored result" in l]
    error = [l for l in lines if l.startswith("rejected row 12:") and "#N/A" in l]
    if not formula:
        print("the formula row without a result was not reported")
        ok = False
    if not error:
        print("the error row was not reported")
        ok = False
    if not ok:
        print("\n".join(lines))
    return ok


if __name__ == "__main__":
    command = sys.argv[1]
    if command == "write":
        write(sys.argv[2])
    elif command == "check":
        sys.exit(0 if check(sys.argv[2]) else 1)
    else:
        sys.exit(2)

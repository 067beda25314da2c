"""openpyxl's side of the spreadsheet round trip (an independent writer).

  write <out.xlsx>       a workbook as another program makes one: columns in
                         another order, shared strings, typed cells, a
                         formula, an error, a date
  check <dump>           the program's import of it (workbook_tool dump) holds
                         what was written
  history <in.xlsx>      a history workbook (workbook_tool history-sample) read
                         by openpyxl: sheets, header, typed cells
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


def history(path):
    book = openpyxl.load_workbook(path)
    header = ["Item ID", "Time (local)", "Time (UTC)", "Value", "Quality", "Good", "Data type"]
    ok = book.sheetnames == ["Values", "Values (2)", "Values (3)"]
    rows = []
    for sheet in book.worksheets:
        values = list(sheet.iter_rows(values_only=True))
        ok = ok and list(values[0]) == header
        rows += values[1:]
    expected_values = [1.5, "=1+2", -7, "True", 0.25]
    ok = ok and len(rows) == 5
    for i, row in enumerate(rows):
        ok = ok and row[0] == "Plant.Line1.Speed"
        ok = ok and isinstance(row[1], datetime.datetime) and isinstance(row[2], datetime.datetime)
        ok = ok and row[2] == datetime.datetime(2025, 3, 14, 8, 0, 50 + i, 250000)
        ok = ok and row[3] == expected_values[i] and type(row[3]) == type(expected_values[i])
        ok = ok and row[4] == (0 if i == 2 else 192) and row[5] is (i != 2)
    if not ok:
        print(book.sheetnames)
        for row in rows:
            print(row)
    return ok


if __name__ == "__main__":
    command = sys.argv[1]
    if command == "write":
        write(sys.argv[2])
    elif command == "history":
        sys.exit(0 if history(sys.argv[2]) else 1)
    elif command == "check":
        sys.exit(0 if check(sys.argv[2]) else 1)
    else:
        sys.exit(2)

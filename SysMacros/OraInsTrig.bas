'#Uses OraInsTrigLib
' OraInsTrig.bas - insert trigger template, platform 2 (PL/SQL).
'
' The host runs Main once for each table that gets an insert trigger. It
' substitutes:
'   TriggerName        the trigger's name, from the model's naming rule
'   Table              the table: .Name, .Owner,
'                      .ParentCount, .Parent(i) relations where it is the child
'   a relation (rel)   .ParentTable, .ParentOwner, .PairCount,
'                      .ParentColumn(j), .ChildColumn(j),
'                      .OnChildInsert   "RESTRICT" or "NONE"
'                      .Recursive       True when parent and child are the table
'   Emit text          appends one line to the generated script
' A new row must find the parent its foreign key names.

Option Explicit

Sub Main()
    Dim i As Integer, rel As Object

    Emit "CREATE OR REPLACE TRIGGER " & QualifiedName(Table.Owner, TriggerName)
    Emit "    BEFORE INSERT ON " & QualifiedName(Table.Owner, Table.Name)
    Emit "    FOR EACH ROW"
    Emit "DECLARE"
    Emit "    n INTEGER;"
    Emit "BEGIN"

    For i = 1 To Table.ParentCount
        Set rel = Table.Parent(i)
        If Not rel.Recursive And rel.OnChildInsert = "RESTRICT" Then
            Emit "    IF " & ForeignKeySet(rel) & " THEN"
            Emit "        SELECT COUNT(*) INTO n FROM " & QualifiedName(rel.ParentOwner, rel.ParentTable) & " p"
            Emit "            WHERE " & ParentRowOf(rel, "p") & ";"
            Emit "        IF n = 0 THEN"
            EmitError "            ", "Cannot insert into " & Table.Name & ": no row of " _
                      & rel.ParentTable & " has that key."
            Emit "        END IF;"
            Emit "    END IF;"
        End If
    Next i

    Emit "    NULL;"
    Emit "END;"
    Emit "/"
End Sub

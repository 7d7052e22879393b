'#Uses OraDelTrigLib
' OraDelTrig.bas - delete trigger template, platform 2 (PL/SQL).
'
' The host runs Main once for each table that gets a delete trigger. It
' substitutes:
'   TriggerName        the trigger's name, from the model's naming rule
'   Table              the table: .Name, .Owner,
'                      .ChildCount, .Child(i)   relations where it is the parent
'   a relation (rel)   .ChildTable, .ChildOwner, .PairCount,
'                      .ParentColumn(j), .ChildColumn(j),
'                      .OnParentDelete  "RESTRICT", "CASCADE", "SET NULL" or "NONE"
'                      .Recursive       True when parent and child are the table
'   Emit text          appends one line to the generated script
' Relations of the table to itself are left to a declared foreign key: a row
' trigger may not read the table it changes.

Option Explicit

Sub Main()
    Dim i As Integer, rel As Object, child As String

    Emit "CREATE OR REPLACE TRIGGER " & QualifiedName(Table.Owner, TriggerName)
    Emit "    BEFORE DELETE ON " & QualifiedName(Table.Owner, Table.Name)
    Emit "    FOR EACH ROW"
    Emit "DECLARE"
    Emit "    n INTEGER;"
    Emit "BEGIN"

    ' Restrictions first: nothing is cascaded when any of them fails.
    For i = 1 To Table.ChildCount
        Set rel = Table.Child(i)
        If Not rel.Recursive And rel.OnParentDelete = "RESTRICT" Then
            Emit "    SELECT COUNT(*) INTO n FROM " & QualifiedName(rel.ChildOwner, rel.ChildTable) & " c"
            Emit "        WHERE " & ChildRowsOf(rel, "c") & ";"
            Emit "    IF n > 0 THEN"
            EmitError "        ", "Cannot delete from " & Table.Name & ": rows of " _
                      & rel.ChildTable & " refer to it."
            Emit "    END IF;"
        End If
    Next i

    For i = 1 To Table.ChildCount
        Set rel = Table.Child(i)
        If Not rel.Recursive Then
            child = QualifiedName(rel.ChildOwner, rel.ChildTable)
            Select Case rel.OnParentDelete
            Case "CASCADE"
                Emit "    DELETE FROM " & child & " c WHERE " & ChildRowsOf(rel, "c") & ";"
            Case "SET NULL"
                Emit "    UPDATE " & child & " c SET " & SetChildColumnsNull(rel)
                Emit "        WHERE " & ChildRowsOf(rel, "c") & ";"
            End Select
        End If
    Next i

    Emit "    NULL;"
    Emit "END;"
    Emit "/"
End Sub

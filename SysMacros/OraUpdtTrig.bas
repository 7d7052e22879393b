'#Uses OraUpdtTrigLib
' OraUpdtTrig.bas - update trigger template, platform 2 (PL/SQL).
'
' The host runs Main once for each table that gets an update trigger. It
' substitutes:
'   TriggerName        the trigger's name, from the model's naming rule
'   Table              the table: .Name, .Owner,
'                      .ChildCount, .Child(i)   relations where it is the parent
'                      .ParentCount, .Parent(i) relations where it is the child
'   a relation (rel)   .ParentTable, .ParentOwner, .ChildTable, .ChildOwner,
'                      .PairCount, .ParentColumn(j), .ChildColumn(j),
'                      .OnParentUpdate  "RESTRICT", "CASCADE", "SET NULL" or "NONE"
'                      .OnChildUpdate   "RESTRICT" or "NONE"
'                      .Recursive       True when parent and child are the table
'   Emit text          appends one line to the generated script
' A row trigger may not read its own table while it changes, so relations of
' the table to itself are left to a declared foreign key.

Option Explicit

Sub Main()
    Dim i As Integer, rel As Object

    Emit "CREATE OR REPLACE TRIGGER " & QualifiedName(Table.Owner, TriggerName)
    Emit "    AFTER UPDATE ON " & QualifiedName(Table.Owner, Table.Name)
    Emit "    FOR EACH ROW"
    Emit "DECLARE"
    Emit "    n INTEGER;"
    Emit "BEGIN"

    ' As the parent: a changed key must not strand the rows that refer to it.
    For i = 1 To Table.ChildCount
        Set rel = Table.Child(i)
        If Not rel.Recursive And rel.OnParentUpdate <> "NONE" Then
            Emit "    IF " & Updating(rel, True) & " THEN"
            Select Case rel.OnParentUpdate
            Case "RESTRICT"
                Emit "        SELECT COUNT(*) INTO n FROM " & QualifiedName(rel.ChildOwner, rel.ChildTable) & " c"
                Emit "            WHERE " & ChildRowsOf(rel, "OLD", "c") & ";"
                Emit "        IF n > 0 THEN"
                EmitError "            ", "Cannot change the key of " & Table.Name & ": rows of " _
                          & rel.ChildTable & " refer to it."
                Emit "        END IF;"
            Case "CASCADE"
                Emit "        UPDATE " & QualifiedName(rel.ChildOwner, rel.ChildTable) & " c"
                Emit "            SET " & Assignments(rel, ":NEW.")
                Emit "            WHERE " & ChildRowsOf(rel, "OLD", "c") & ";"
            Case "SET NULL"
                Emit "        UPDATE " & QualifiedName(rel.ChildOwner, rel.ChildTable) & " c"
                Emit "            SET " & Assignments(rel, "")
                Emit "            WHERE " & ChildRowsOf(rel, "OLD", "c") & ";"
            End Select
            Emit "    END IF;"
        End If
    Next i

    ' As the child: a changed foreign key must find its parent.
    For i = 1 To Table.ParentCount
        Set rel = Table.Parent(i)
        If Not rel.Recursive And rel.OnChildUpdate = "RESTRICT" Then
            Emit "    IF (" & Updating(rel, False) & ") AND " & ForeignKeySet(rel) & " THEN"
            Emit "        SELECT COUNT(*) INTO n FROM " & QualifiedName(rel.ParentOwner, rel.ParentTable) & " p"
            Emit "            WHERE " & ParentRowOf(rel, "p") & ";"
            Emit "        IF n = 0 THEN"
            EmitError "            ", "Cannot change " & Table.Name & ": no row of " _
                      & rel.ParentTable & " has the new key."
            Emit "        END IF;"
            Emit "    END IF;"
        End If
    Next i

    Emit "    NULL;"
    Emit "END;"
    Emit "/"
End Sub

' "f1 = :NEW.k1, f2 = :NEW.k2" (source ":NEW.") or "f1 = NULL, f2 = NULL"
' (source ""): the child's foreign key after the parent's change.
Function Assignments(rel As Object, source As String) As String
    Dim j As Integer, text As String
    For j = 1 To rel.PairCount
        If j > 1 Then text = text & ", "
        If source = "" Then
            text = text & rel.ChildColumn(j) & " = NULL"
        Else
            text = text & rel.ChildColumn(j) & " = " & source & rel.ParentColumn(j)
        End If
    Next j
    Assignments = text
End Function

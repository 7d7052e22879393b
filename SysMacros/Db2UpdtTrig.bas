'#Uses Db2UpdtTrigLib
' Db2UpdtTrig.bas - update trigger template, platform 3 (SQL PL).
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
'   Emit text          appends one line to the generated script
' The script ends each statement with "@", as compound statements need.

Option Explicit

Sub Main()
    Dim i As Integer, rel As Object, child As String, statements As Integer

    Emit "CREATE TRIGGER " & QualifiedName(Table.Owner, TriggerName)
    Emit "    AFTER UPDATE ON " & QualifiedName(Table.Owner, Table.Name)
    Emit "    REFERENCING OLD AS O NEW AS N"
    Emit "    FOR EACH ROW MODE DB2SQL"
    Emit "BEGIN ATOMIC"

    ' As the parent: a changed key must not strand the rows that refer to it.
    For i = 1 To Table.ChildCount
        Set rel = Table.Child(i)
        child = QualifiedName(rel.ChildOwner, rel.ChildTable)
        Select Case rel.OnParentUpdate
        Case "RESTRICT"
            Emit "    IF (" & Changed(rel, True) & ")"
            Emit "       AND EXISTS (SELECT 1 FROM " & child & " c WHERE " & ChildRowsOf(rel, "O", "c") & ") THEN"
            EmitError "        ", "Key of " & Table.Name & " in use by " & rel.ChildTable
            Emit "    END IF;"
        Case "CASCADE"
            Emit "    IF " & Changed(rel, True) & " THEN"
            Emit "        UPDATE " & child & " c SET " & Assignments(rel, "N.")
            Emit "            WHERE " & ChildRowsOf(rel, "O", "c") & ";"
            Emit "    END IF;"
        Case "SET NULL"
            Emit "    IF " & Changed(rel, True) & " THEN"
            Emit "        UPDATE " & child & " c SET " & Assignments(rel, "")
            Emit "            WHERE " & ChildRowsOf(rel, "O", "c") & ";"
            Emit "    END IF;"
        End Select
        If rel.OnParentUpdate <> "NONE" Then statements = statements + 1
    Next i

    ' As the child: a changed foreign key must find its parent.
    For i = 1 To Table.ParentCount
        Set rel = Table.Parent(i)
        If rel.OnChildUpdate = "RESTRICT" Then
            Emit "    IF (" & Changed(rel, False) & ") AND " & ForeignKeySet(rel)
            Emit "       AND NOT EXISTS (SELECT 1 FROM " & QualifiedName(rel.ParentOwner, rel.ParentTable) _
                 & " p WHERE " & ParentRowOf(rel, "p") & ") THEN"
            EmitError "        ", "No " & rel.ParentTable & " for the new key of " & Table.Name
            Emit "    END IF;"
            statements = statements + 1
        End If
    Next i

    ' A compound statement must hold a statement.
    If statements = 0 Then Emit "    RETURN;"
    Emit "END@"
End Sub

' "f1 = N.k1, f2 = N.k2" (source "N.") or "f1 = NULL, f2 = NULL" (source ""):
' the child's foreign key after the parent's change.
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

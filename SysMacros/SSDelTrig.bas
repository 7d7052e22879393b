'#Uses SSDelTrigLib
' SSDelTrig.bas - delete trigger template, platform 1 (Transact-SQL).
'
' The host runs Main once for each table that gets a delete trigger. It
' substitutes:
'   TriggerName        the trigger's name, from the model's naming rule
'   Table              the table: .Name, .Owner,
'                      .ChildCount, .Child(i)   relations where it is the parent
'   a relation (rel)   .ChildTable, .ChildOwner, .PairCount,
'                      .ParentColumn(j), .ChildColumn(j),
'                      .OnParentDelete  "RESTRICT", "CASCADE", "SET NULL" or "NONE"
'   Emit text          appends one line to the generated script
' Deleting a child never needs a check, so only the parent side is written.

Option Explicit

Sub Main()
    Dim i As Integer, rel As Object, child As String

    Emit "CREATE TRIGGER " & QualifiedName(Table.Owner, TriggerName)
    Emit "    ON " & QualifiedName(Table.Owner, Table.Name)
    Emit "    AFTER DELETE"
    Emit "AS"
    Emit "BEGIN"
    Emit "    SET NOCOUNT ON;"

    ' Restrictions first: nothing is cascaded when any of them fails.
    For i = 1 To Table.ChildCount
        Set rel = Table.Child(i)
        If rel.OnParentDelete = "RESTRICT" Then
            child = QualifiedName(rel.ChildOwner, rel.ChildTable)
            Emit "    IF EXISTS (SELECT 1 FROM deleted d JOIN " & child & " c"
            Emit "               ON " & PairCondition(rel, "d", "c") & ")"
            EmitError "        ", "Cannot delete from " & Table.Name & ": rows of " _
                      & rel.ChildTable & " refer to it."
        End If
    Next i

    For i = 1 To Table.ChildCount
        Set rel = Table.Child(i)
        child = QualifiedName(rel.ChildOwner, rel.ChildTable)
        Select Case rel.OnParentDelete
        Case "CASCADE"
            Emit "    DELETE c FROM " & child & " c"
            Emit "        JOIN deleted d ON " & PairCondition(rel, "d", "c") & ";"
        Case "SET NULL"
            Emit "    UPDATE c SET " & SetChildColumnsNull(rel)
            Emit "        FROM " & child & " c JOIN deleted d ON " & PairCondition(rel, "d", "c") & ";"
        End Select
    Next i

    Emit "END;"
    Emit "GO"
End Sub

'#Uses SSUpdtTrigLib
' SSUpdtTrig.bas - update trigger template, platform 1 (Transact-SQL).
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
' The statement-level trigger reads the pseudo-tables inserted and deleted.

Option Explicit

Sub Main()
    Dim i As Integer, rel As Object, child As String, parent As String

    Emit "CREATE TRIGGER " & QualifiedName(Table.Owner, TriggerName)
    Emit "    ON " & QualifiedName(Table.Owner, Table.Name)
    Emit "    AFTER UPDATE"
    Emit "AS"
    Emit "BEGIN"
    Emit "    SET NOCOUNT ON;"

    ' As the parent: a changed key must not strand the rows that refer to it.
    For i = 1 To Table.ChildCount
        Set rel = Table.Child(i)
        child = QualifiedName(rel.ChildOwner, rel.ChildTable)
        Select Case rel.OnParentUpdate
        Case "RESTRICT"
            Emit "    IF (" & AnyColumnUpdated(rel, True) & ")"
            Emit "       AND EXISTS (SELECT 1 FROM deleted d JOIN " & child & " c"
            Emit "                   ON " & PairCondition(rel, "d", "c") & ")"
            EmitError "        ", "Cannot change the key of " & Table.Name & ": rows of " _
                      & rel.ChildTable & " refer to it."
        Case "SET NULL"
            Emit "    IF (" & AnyColumnUpdated(rel, True) & ")"
            Emit "        UPDATE c SET " & SetChildColumnsNull(rel)
            Emit "        FROM " & child & " c JOIN deleted d ON " & PairCondition(rel, "d", "c")
            Emit "        WHERE NOT EXISTS (SELECT 1 FROM inserted n WHERE " _
                 & PairCondition(rel, "n", "c") & ");"
        Case "CASCADE"
            ' Old and new rows cannot be paired once the key changed, so a
            ' cascade follows single-row updates only.
            Emit "    IF (" & AnyColumnUpdated(rel, True) & ")"
            Emit "    BEGIN"
            Emit "        IF (SELECT COUNT(*) FROM inserted) > 1"
            EmitError "            ", "Change the key of one " & Table.Name & " row at a time."
            Emit "        UPDATE c SET " & CopyParentKey(rel, "n")
            Emit "        FROM " & child & " c JOIN deleted d ON " & PairCondition(rel, "d", "c")
            Emit "        CROSS JOIN inserted n;"
            Emit "    END"
        End Select
    Next i

    ' As the child: a changed foreign key must find its parent.
    For i = 1 To Table.ParentCount
        Set rel = Table.Parent(i)
        parent = QualifiedName(rel.ParentOwner, rel.ParentTable)
        If rel.OnChildUpdate = "RESTRICT" Then
            Emit "    IF (" & AnyColumnUpdated(rel, False) & ")"
            Emit "       AND EXISTS (SELECT 1 FROM inserted c WHERE " & ForeignKeySet(rel, "c")
            Emit "                   AND NOT EXISTS (SELECT 1 FROM " & parent & " p"
            Emit "                                   WHERE " & PairCondition(rel, "p", "c") & "))"
            EmitError "        ", "Cannot change " & Table.Name & ": no row of " _
                      & rel.ParentTable & " has the new key."
        End If
    Next i

    Emit "END;"
    Emit "GO"
End Sub

' "[f1] = NULL, [f2] = NULL" over the child's foreign-key columns.
Function SetChildColumnsNull(rel As Object) As String
    Dim j As Integer, text As String
    For j = 1 To rel.PairCount
        If j > 1 Then text = text & ", "
        text = text & "[" & rel.ChildColumn(j) & "] = NULL"
    Next j
    SetChildColumnsNull = text
End Function

' "[f1] = n.[k1], [f2] = n.[k2]": the child takes the parent's new key.
Function CopyParentKey(rel As Object, newAlias As String) As String
    Dim j As Integer, text As String
    For j = 1 To rel.PairCount
        If j > 1 Then text = text & ", "
        text = text & "[" & rel.ChildColumn(j) & "] = " & newAlias & ".[" & rel.ParentColumn(j) & "]"
    Next j
    CopyParentKey = text
End Function

'#Uses SSInsTrigLib
' SSInsTrig.bas - insert trigger template, platform 1 (Transact-SQL).
'
' The host runs Main once for each table that gets an insert trigger. It
' substitutes:
'   TriggerName        the trigger's name, from the model's naming rule
'   Table              the table: .Name, .Owner,
'                      .ParentCount, .Parent(i) relations where it is the child
'   a relation (rel)   .ParentTable, .ParentOwner, .PairCount,
'                      .ParentColumn(j), .ChildColumn(j),
'                      .OnChildInsert   "RESTRICT" or "NONE"
'   Emit text          appends one line to the generated script
' A new row must find the parent its foreign key names.

Option Explicit

Sub Main()
    Dim i As Integer, rel As Object, parent As String, checks As Integer

    Emit "CREATE TRIGGER " & QualifiedName(Table.Owner, TriggerName)
    Emit "    ON " & QualifiedName(Table.Owner, Table.Name)
    Emit "    AFTER INSERT"
    Emit "AS"
    Emit "BEGIN"
    Emit "    SET NOCOUNT ON;"

    For i = 1 To Table.ParentCount
        Set rel = Table.Parent(i)
        If rel.OnChildInsert = "RESTRICT" Then
            parent = QualifiedName(rel.ParentOwner, rel.ParentTable)
            Emit "    IF EXISTS (SELECT 1 FROM inserted i WHERE " & ForeignKeySet(rel, "i")
            Emit "               AND NOT EXISTS (SELECT 1 FROM " & parent & " p"
            Emit "                               WHERE " & PairCondition(rel, "p", "i") & "))"
            EmitError "        ", "Cannot insert into " & Table.Name & ": no row of " _
                      & rel.ParentTable & " has that key."
            checks = checks + 1
        End If
    Next i

    ' A trigger body must hold a statement.
    If checks = 0 Then Emit "    RETURN;"
    Emit "END;"
    Emit "GO"
End Sub

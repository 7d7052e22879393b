'#Uses Db2DelTrigLib
' Db2DelTrig.bas - delete trigger template, platform 3 (SQL PL).
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
' The script ends each statement with "@", as compound statements need.

Option Explicit

Sub Main()
    Dim i As Integer, rel As Object, child As String, statements As Integer

    Emit "CREATE TRIGGER " & QualifiedName(Table.Owner, TriggerName)
    Emit "    AFTER DELETE ON " & QualifiedName(Table.Owner, Table.Name)
    Emit "    REFERENCING OLD AS O"
    Emit "    FOR EACH ROW MODE DB2SQL"
    Emit "BEGIN ATOMIC"

    ' Restrictions first: nothing is cascaded when any of them fails.
    For i = 1 To Table.ChildCount
        Set rel = Table.Child(i)
        If rel.OnParentDelete = "RESTRICT" Then
            Emit "    IF EXISTS (SELECT 1 FROM " & QualifiedName(rel.ChildOwner, rel.ChildTable) _
                 & " c WHERE " & ChildRowsOf(rel, "c") & ") THEN"
            EmitError "        ", Table.Name & " row in use by " & rel.ChildTable
            Emit "    END IF;"
            statements = statements + 1
        End If
    Next i

    For i = 1 To Table.ChildCount
        Set rel = Table.Child(i)
        child = QualifiedName(rel.ChildOwner, rel.ChildTable)
        Select Case rel.OnParentDelete
        Case "CASCADE"
            Emit "    DELETE FROM " & child & " c WHERE " & ChildRowsOf(rel, "c") & ";"
            statements = statements + 1
        Case "SET NULL"
            Emit "    UPDATE " & child & " c SET " & SetChildColumnsNull(rel)
            Emit "        WHERE " & ChildRowsOf(rel, "c") & ";"
            statements = statements + 1
        End Select
    Next i

    ' A compound statement must hold a statement.
    If statements = 0 Then Emit "    RETURN;"
    Emit "END@"
End Sub

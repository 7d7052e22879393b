'#Uses Db2InsTrigLib
' Db2InsTrig.bas - insert trigger template, platform 3 (SQL PL).
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
' A new row must find the parent its foreign key names. The script ends each
' statement with "@", as compound statements need.

Option Explicit

Sub Main()
    Dim i As Integer, rel As Object, checks As Integer

    Emit "CREATE TRIGGER " & QualifiedName(Table.Owner, TriggerName)
    Emit "    AFTER INSERT ON " & QualifiedName(Table.Owner, Table.Name)
    Emit "    REFERENCING NEW AS N"
    Emit "    FOR EACH ROW MODE DB2SQL"
    Emit "BEGIN ATOMIC"

    For i = 1 To Table.ParentCount
        Set rel = Table.Parent(i)
        If rel.OnChildInsert = "RESTRICT" Then
            Emit "    IF " & ForeignKeySet(rel)
            Emit "       AND NOT EXISTS (SELECT 1 FROM " & QualifiedName(rel.ParentOwner, rel.ParentTable) _
                 & " p WHERE " & ParentRowOf(rel, "p") & ") THEN"
            EmitError "        ", "No " & rel.ParentTable & " for new " & Table.Name
            Emit "    END IF;"
            checks = checks + 1
        End If
    Next i

    ' A compound statement must hold a statement.
    If checks = 0 Then Emit "    RETURN;"
    Emit "END@"
End Sub

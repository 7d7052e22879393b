' SSDelTrigLib.bas - helper library of the delete trigger, platform 1
' (Transact-SQL).
'
' Loaded by the host before SSDelTrig.bas. A relation (rel) has .PairCount,
' .ParentColumn(j) and .ChildColumn(j), as described in SSDelTrig.bas.

Option Explicit

' [owner].[name], or [name] when the owner is empty.
Function QualifiedName(owner As String, name As String) As String
    If owner = "" Then
        QualifiedName = "[" & name & "]"
    Else
        QualifiedName = "[" & owner & "].[" & name & "]"
    End If
End Function

' "d.[k1] = c.[f1] AND ...": the child rows of the deleted parent rows.
Function PairCondition(rel As Object, parentAlias As String, childAlias As String) As String
    Dim j As Integer, text As String
    For j = 1 To rel.PairCount
        If j > 1 Then text = text & " AND "
        text = text & parentAlias & ".[" & rel.ParentColumn(j) & "] = " _
                    & childAlias & ".[" & rel.ChildColumn(j) & "]"
    Next j
    PairCondition = text
End Function

' "[f1] = NULL, [f2] = NULL" over the child's foreign-key columns.
Function SetChildColumnsNull(rel As Object) As String
    Dim j As Integer, text As String
    For j = 1 To rel.PairCount
        If j > 1 Then text = text & ", "
        text = text & "[" & rel.ChildColumn(j) & "] = NULL"
    Next j
    SetChildColumnsNull = text
End Function

' Emits the statement that ends the trigger with an error and rolls back.
Sub EmitError(indent As String, message As String)
    Emit indent & "THROW 50002, N'" & Replace(message, "'", "''") & "', 1;"
End Sub
